#pragma once

#include "platform/cocoa/Cell.h"

#include <QPainter>

namespace cocoa {

/// Draws a combo box's frame and arrow; the text is drawn by the box's own line edit.
class ComboBoxCell : public Cell {
public:
    /// The base draws the platform's own combo box into `frame`.
    virtual void drawWithFrame(QPainter& painter, const QRectF& frame);

    /// The rectangle of the text inside `frame`; the base returns the platform's.
    virtual QRectF textRectForFrame(const QRectF& frame) const;
};

} // namespace cocoa
