#pragma once

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>

#include <vector>

class QPainter;

/// UTF-16 units of a text.
struct TextRange {
    qsizetype start;
    qsizetype length;
};

/// A text with one colour and one font, set on one line. Main thread only.
struct AttributedString {
    QString text;
    QColor colour;
    QFont font;
    /// Ranges with a highlighted background.
    std::vector<TextRange> marked = {};

    /// The size of the whole text in points.
    QSizeF size() const;

    /// Draws from the rectangle's top left corner; what does not fit its width is elided at the end.
    void drawInRect(QPainter& painter, const QRectF& rect) const;

private:
    void drawMarks(QPainter& painter, const QRectF& rect, const QString& shown) const;
};
