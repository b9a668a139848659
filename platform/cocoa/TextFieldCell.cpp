#include "platform/cocoa/TextFieldCell.h"

namespace cocoa {

void TextFieldCell::drawInteriorWithFrame(QPainter& painter, const QRectF& frame) {
    if (m_backgroundColor.isValid()) painter.fillRect(frame, m_backgroundColor);
    constexpr double margin = 4;
    const QRectF text = frame.adjusted(margin, 0, -margin, 0);
    if (text.width() <= 0) return;
    const QString shown =
        painter.fontMetrics().elidedText(m_objectValue.toString(), Qt::ElideRight, int(text.width()));
    painter.drawText(text, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
}

} // namespace cocoa
