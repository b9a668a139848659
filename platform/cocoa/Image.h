#pragma once

#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QSizeF>
#include <QString>

#include <memory>

namespace cocoa {

/// A picture with a size in points, drawn crisp at any scale: SVG art is rendered at the device's own
/// resolution and kept. Edges fall on device pixels, so neighbouring pictures leave no seam. A shared value;
/// main thread only.
class Image {
public:
    /// No picture: size 0 x 0, draws nothing.
    Image() = default;
    /// A bitmap; its size in points is its pixels divided by its device pixel ratio.
    explicit Image(const QImage& bitmap);

    /// The resource ":/images/NAME.svg" or ":/images/NAME.png"; a suffix ".png" of `name` is ignored. Null
    /// when there is none. Loaded once.
    static Image named(const QString& name);

    bool isNull() const { return m_data == nullptr; }
    QSizeF size() const;

    /// Scaled into `rect`.
    void drawInRect(QPainter& painter, const QRectF& rect) const;
    /// Draws it at its own size with the top-left corner at `topLeft`.
    void drawAtPoint(QPainter& painter, const QPointF& topLeft) const;

    /// The same art at another height: the part between these two lines (points from its top) grows or
    /// shrinks, what is above and below stays as it is.
    Image withHeight(double height, double stretchedFrom, double stretchedTo) const;

    /// The whole picture rendered to exactly this many pixels.
    QPixmap pixmap(const QSize& devicePixels) const;

private:
    struct Data;
    explicit Image(std::shared_ptr<Data> data) : m_data(std::move(data)) {}
    std::shared_ptr<Data> m_data;
};

} // namespace cocoa
