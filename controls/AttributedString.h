#pragma once

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>

class QPainter;

/// A text with one colour and one font, set on one line. Main thread only.
struct AttributedString {
    QString text;
    QColor colour;
    QFont font;

    /// What the whole text takes, in points.
    QSizeF size() const;

    /// Draws from the rectangle's top left corner; what does not fit its width is elided at the end.
    void drawInRect(QPainter& painter, const QRectF& rect) const;
};
