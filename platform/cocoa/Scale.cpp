#include "platform/cocoa/Scale.h"

#include <QWidget>

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

QRectF designRect(const QWidget& widget) {
    return {QPointF(), QSizeF(widget.size()) / Scale::shared().factor()};
}

} // namespace cocoa
