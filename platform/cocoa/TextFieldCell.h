#pragma once

#include "platform/cocoa/Cell.h"

#include <QColor>
#include <QPainter>
#include <QString>
#include <QVariant>

namespace cocoa {

/// A cell that shows one value as text over a background: the base of a table's row cells.
class TextFieldCell : public Cell {
public:
    /// Painted behind the content; an invalid colour paints nothing.
    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor& color) { m_backgroundColor = color; }

    /// The value that the data source gave for the row.
    const QVariant& objectValue() const { return m_objectValue; }
    void setObjectValue(const QVariant& value) { m_objectValue = value; }

    /// Draws the content into `frame` (points, y grows downward). The painter is not clipped to the frame.
    /// The base draws the background and the value's text.
    virtual void drawInteriorWithFrame(QPainter& painter, const QRectF& frame);

    /// What a screen reader says for the content; the base answers the value's text.
    virtual QString accessibilityLabel() const { return m_objectValue.toString(); }

private:
    QColor m_backgroundColor;
    QVariant m_objectValue;
};

} // namespace cocoa
