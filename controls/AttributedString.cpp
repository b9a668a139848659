#include "controls/AttributedString.h"

#include "controls/Colours.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>

QSizeF AttributedString::size() const {
    return QFontMetricsF(font).size(Qt::TextSingleLine, text);
}

void AttributedString::drawInRect(QPainter& painter, const QRectF& rect) const {
    if (rect.width() <= 0.0) return;
    const QFontMetricsF metrics(font);
    const bool fits = metrics.size(Qt::TextSingleLine, text).width() <= rect.width();
    const QString shown = fits ? text : metrics.elidedText(text, Qt::ElideRight, rect.width());
    if (!marked.empty()) drawMarks(painter, rect, shown);
    painter.setPen(colour);
    painter.setFont(font);
    painter.drawText(rect,
                     Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignTop | Qt::TextSingleLine | Qt::TextDontClip,
                     shown);
}

void AttributedString::drawMarks(QPainter& painter, const QRectF& rect, const QString& shown) const {
    QTextLayout layout(shown, font);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    painter.setPen(Qt::NoPen);
    painter.setBrush(colours::mark());
    for (const auto& [start, length] : marked) {
        const qsizetype end = std::min(start + length, shown.size());
        if (start >= end) continue;
        const auto [left, right] =
            std::minmax({line.cursorToX(static_cast<int>(start)), line.cursorToX(static_cast<int>(end))});
        painter.drawRoundedRect(QRectF(rect.x() + left - 1, rect.y(), right - left + 2, rect.height()), 2, 2);
    }
}
