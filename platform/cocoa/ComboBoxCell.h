#pragma once

#include "platform/cocoa/Cell.h"

#include <QPainter>

namespace cocoa {

/// Draws a combo box's frame and arrow; the text is drawn by the box's own line edit.
class ComboBoxCell : public Cell {
public:
    /// The base draws the platform's own combo box into `frame`.
    virtual void drawWithFrame(QPainter& painter, const QRectF& frame);

    /// Where the text may stand inside `frame`; the base answers the platform's own place for it.
    virtual QRectF textRectForFrame(const QRectF& frame) const;
};

} // namespace cocoa
