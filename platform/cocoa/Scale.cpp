#include "platform/cocoa/Scale.h"

namespace cocoa {

Scale& Scale::shared() {
    static Scale scale;
    return scale;
}

void Scale::setFactor(double factor) {
    if (factor == m_factor) return;
    m_factor = factor;
    emit changed();
}

double scaled(double points) {
    return points * Scale::shared().factor();
}

int scaledToInt(double points) {
    return qRound(scaled(points));
}

/// Edges are rounded and not sizes, so that neighbours in the design stay neighbours.
QRect scaledToInt(const QRectF& rect) {
    const QPoint topLeft(scaledToInt(rect.left()), scaledToInt(rect.top()));
    const QPoint bottomRight(scaledToInt(rect.right()), scaledToInt(rect.bottom()));
    return {topLeft, bottomRight - QPoint(1, 1)};
}

QPointF designPoint(const QPointF& point) {
    return point / Scale::shared().factor();
}

QRectF designRect(const QRectF& rect) {
    return {designPoint(rect.topLeft()), rect.size() / Scale::shared().factor()};
}

QRectF designRect(const QWidget& widget) {
    return designRect(QRectF(widget.rect()));
}

DesignPainter::DesignPainter(QWidget* widget) : QPainter(widget) {
    scale(Scale::shared().factor(), Scale::shared().factor());
}

} // namespace cocoa
