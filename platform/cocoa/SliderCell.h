#pragma once

#include "platform/cocoa/Cell.h"

#include <QPainter>
#include <QRectF>

namespace cocoa {

/// The value, range, geometry and drawing of a horizontal slider. Rectangles are in the slider's coordinates
/// (points, y grows downward), so `flipped` is always true here.
class SliderCell : public Cell {
public:
    double minValue() const { return m_minValue; }
    double maxValue() const { return m_maxValue; }
    /// The value as it was set: never changed by a change of the range.
    double doubleValue() const { return m_doubleValue; }
    void setMinValue(double value);
    void setMaxValue(double value);
    /// Clipped to the range when the range is not empty; not-a-number is ignored.
    void setDoubleValue(double value);

    /// 0..1 along the range; 0 for an empty range.
    double fraction() const;

    /// The bar: the slider's whole bounds.
    QRectF barRectFlipped(bool flipped) const;
    /// The knob: a square of the control size's thickness (20, 16, 14), vertically centred, that travels from
    /// the bounds' left edge to their right edge.
    QRectF knobRectFlipped(bool flipped) const;
    double knobThickness() const;

    /// Draws the bar, then the knob.
    void drawWithFrame(QPainter& painter);
    /// The base draws the platform's own bar across `rect`.
    virtual void drawBarInside(QPainter& painter, const QRectF& rect, bool flipped);
    /// The base draws the platform's own knob, centred on `knobRect`.
    virtual void drawKnob(QPainter& painter, const QRectF& knobRect);

private:
    void redraw();

    double m_minValue = 0.0;
    double m_maxValue = 1.0;
    double m_doubleValue = 0.0;
};

} // namespace cocoa
