#include "controls/AttributedString.h"

#include <QFontMetricsF>
#include <QPainter>

QSizeF AttributedString::size() const {
    return QFontMetricsF(font).size(Qt::TextSingleLine, text);
}

void AttributedString::drawInRect(QPainter& painter, const QRectF& rect) const {
    if (rect.width() <= 0.0) return;
    const QFontMetricsF metrics(font);
    const bool fits = metrics.size(Qt::TextSingleLine, text).width() <= rect.width();
    painter.setPen(colour);
    painter.setFont(font);
    painter.drawText(rect,
                     Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignTop | Qt::TextSingleLine | Qt::TextDontClip,
                     fits ? text : metrics.elidedText(text, Qt::ElideRight, rect.width()));
}
