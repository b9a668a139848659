#include "platform/cocoa/ThreePartImage.h"

#include <algorithm>

namespace cocoa {
namespace {

/// Rectangles in coordinates along and across the direction of the three parts.
struct Axis {
    Qt::Orientation orientation;

    double length(const QSizeF& size) const { return horizontal() ? size.width() : size.height(); }
    double thickness(const QSizeF& size) const { return horizontal() ? size.height() : size.width(); }
    /// From `start` to `end` along the frame, `thickness` wide in the middle across it.
    QRectF part(const QRectF& frame, double start, double end, double thickness) const {
        const double across = (this->thickness(frame.size()) - thickness) / 2;
        if (horizontal()) return {frame.x() + start, frame.y() + across, end - start, thickness};
        return {frame.x() + across, frame.y() + start, thickness, end - start};
    }

private:
    bool horizontal() const { return orientation == Qt::Horizontal; }
};

/// Stretches a rendering of the centre at its own length.
void drawStretched(QPainter& painter, const Image& image, const QRectF& rect, Axis axis) {
    if (image.isNull() || rect.isEmpty()) return;
    const QTransform transform = painter.deviceTransform();
    const QRectF device = transform.mapRect(rect);
    const QSizeF ownSize = transform.mapRect(QRectF(QPointF(), image.size())).size();
    const bool horizontal = axis.orientation == Qt::Horizontal;
    const QSize pixels(std::max(1, qRound(horizontal ? ownSize.width() : device.width())),
                       std::max(1, qRound(horizontal ? device.height() : ownSize.height())));
    const QPointF topLeft(std::round(device.left()), std::round(device.top()));
    const QPointF bottomRight(std::round(device.right()), std::round(device.bottom()));
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(transform.inverted().mapRect(QRectF(topLeft, bottomRight)), image.pixmap(pixels),
                       QRectF(QPointF(), QSizeF(pixels)));
    painter.restore();
}

/// At its own size, but nothing of it outside `room`.
void drawCap(QPainter& painter, const Image& image, const QRectF& place, const QRectF& room) {
    if (image.isNull() || room.isEmpty()) return;
    if (room.contains(place)) return image.drawInRect(painter, place);
    painter.save();
    painter.setClipRect(room, Qt::IntersectClip);
    image.drawInRect(painter, place);
    painter.restore();
}

} // namespace

void drawThreePartImage(QPainter& painter, const QRectF& frame, const Image& startCap,
                        const Image& centreFill, const Image& endCap, Qt::Orientation orientation) {
    const Axis axis{orientation};
    const double length = axis.length(frame.size());
    if (length <= 0) return;
    const double startLength = axis.length(startCap.size());
    const double endLength = axis.length(endCap.size());
    const double capsLength = startLength + endLength;
    const double fit = capsLength > length ? length / capsLength : 1.0;
    const double startEnd = startLength * fit;
    const double endStart = length - endLength * fit;

    const double startThickness = axis.thickness(startCap.size());
    const double endThickness = axis.thickness(endCap.size());
    drawCap(painter, startCap, axis.part(frame, 0, startLength, startThickness),
            axis.part(frame, 0, startEnd, startThickness));
    drawStretched(painter, centreFill, axis.part(frame, startEnd, endStart, axis.thickness(frame.size())),
                  axis);
    drawCap(painter, endCap, axis.part(frame, length - endLength, length, endThickness),
            axis.part(frame, endStart, length, endThickness));
}

} // namespace cocoa
