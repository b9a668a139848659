#pragma once

#include "platform/cocoa/ComboBoxCell.h"
#include "platform/cocoa/Image.h"

/// Draws the selector of internal playlists: the platform's combo box with a custom arrow.
///
/// Threads: main thread only.
class InternalPlaylistComboBoxCell : public cocoa::ComboBoxCell {
public:
    /// Fetched again at every drawing.
    const cocoa::Image& dropdownIcon() const { return m_dropdownIcon; }
    void setDropdownIcon(const cocoa::Image& icon) { m_dropdownIcon = icon; }

    /// Whether a dot stands behind the text.
    bool isMarked() const { return m_marked; }
    void setMarked(bool marked) { m_marked = marked; }

    /// Where the arrow stands in a box of this frame (points, y grows downward).
    static QRectF dropdownIconRect(const QRectF& frame);

    void drawWithFrame(QPainter& painter, const QRectF& frame) override;
    QRectF textRectForFrame(const QRectF& frame) const override;

private:
    void drawMark(QPainter& painter, const QRectF& frame) const;

    cocoa::Image m_dropdownIcon;
    bool m_marked = false;
};
