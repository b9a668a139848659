#include "controls/InternalPlaylistComboBoxCell.h"

QRectF InternalPlaylistComboBoxCell::dropdownIconRect(const QRectF& frame) {
    return {frame.x() + frame.width() - 24.0, frame.y() + 2.0, 21.0, 21.0};
}

void InternalPlaylistComboBoxCell::drawWithFrame(QPainter& painter, const QRectF& frame) {
    ComboBoxCell::drawWithFrame(painter, frame);
    m_dropdownIcon = cocoa::Image::named(QStringLiteral("internal_playlist_selector_arrow"));
    m_dropdownIcon.drawInRect(painter, dropdownIconRect(frame));
}
