#include "controls/InternalPlaylistComboBoxCell.h"

#include "controls/Colours.h"
#include "platform/cocoa/ComboBox.h"
#include "platform/cocoa/Scale.h"

#include <algorithm>

namespace {

constexpr double markSize = 5;
constexpr double markGap = 10; ///< Between the text and the mark.

} // namespace

QRectF InternalPlaylistComboBoxCell::dropdownIconRect(const QRectF& frame) {
    return {frame.x() + frame.width() - 24.0, frame.y() + 2.0, 21.0, 21.0};
}

void InternalPlaylistComboBoxCell::drawWithFrame(QPainter& painter, const QRectF& frame) {
    ComboBoxCell::drawWithFrame(painter, frame);
    m_dropdownIcon = cocoa::Image::named(QStringLiteral("internal_playlist_selector_arrow"));
    painter.save();
    painter.scale(cocoa::scaled(1), cocoa::scaled(1));
    m_dropdownIcon.drawInRect(painter, dropdownIconRect(cocoa::designRect(frame)));
    painter.restore();
    if (m_marked) drawMark(painter, frame);
}

/// Always leaves room for the mark, so that the text does not move when it appears.
QRectF InternalPlaylistComboBoxCell::textRectForFrame(const QRectF& frame) const {
    return ComboBoxCell::textRectForFrame(frame).adjusted(0, 0, -cocoa::scaled(markGap), 0);
}

void InternalPlaylistComboBoxCell::drawMark(QPainter& painter, const QRectF& frame) const {
    const auto* box = static_cast<const cocoa::ComboBox*>(controlView());
    const QRectF text = textRectForFrame(frame);
    const double end = text.left() + box->fontMetrics().horizontalAdvance(box->stringValue());
    const double gap = cocoa::scaled(markGap);
    const double size = cocoa::scaled(markSize);
    const double left = std::min(end + gap, text.right() + gap / 2);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colours::yellow());
    painter.drawEllipse(QRectF(left, frame.center().y() - size / 2, size, size));
}
