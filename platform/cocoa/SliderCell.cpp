#include "platform/cocoa/SliderCell.h"

#include "platform/cocoa/Scale.h"
#include "platform/cocoa/Slider.h"

#include <QStyle>
#include <QStyleOptionSlider>

#include <algorithm>
#include <cmath>

namespace cocoa {
namespace {

/// The platform draws sliders by whole numbers; this many steps are finer than a pixel.
constexpr int styleSteps = 10000;

QStyleOptionSlider styleOption(const SliderCell& cell, const QWidget& view, QStyle::SubControl part) {
    QStyleOptionSlider option;
    option.initFrom(&view);
    option.orientation = Qt::Horizontal;
    option.maximum = styleSteps;
    option.sliderPosition = option.sliderValue = int(std::lround(cell.fraction() * styleSteps));
    option.upsideDown = option.direction == Qt::RightToLeft;
    option.subControls = part;
    option.state |= QStyle::State_Horizontal;
    option.state.setFlag(QStyle::State_HasFocus, false); // the slider marks its focus itself
    return option;
}

} // namespace

void SliderCell::redraw() {
    if (auto* slider = qobject_cast<Slider*>(controlView()))
        slider->setNeedsDisplayInRect(knobRectFlipped(true));
}

void SliderCell::setMinValue(double value) {
    m_minValue = value;
    redraw();
}

void SliderCell::setMaxValue(double value) {
    m_maxValue = value;
    redraw();
}

void SliderCell::setDoubleValue(double value) {
    if (std::isnan(value)) return;
    const double clipped = m_minValue < m_maxValue ? std::clamp(value, m_minValue, m_maxValue) : value;
    if (clipped == m_doubleValue) return;
    m_doubleValue = clipped;
    redraw();
}

double SliderCell::fraction() const {
    const double range = m_maxValue - m_minValue;
    if (!(range > 0)) return 0;
    return std::clamp((m_doubleValue - m_minValue) / range, 0.0, 1.0);
}

double SliderCell::knobThickness() const {
    switch (controlSize()) {
    case ControlSize::mini:
        return 14;
    case ControlSize::small:
        return 16;
    case ControlSize::regular:
        break;
    }
    return 20;
}

QRectF SliderCell::barRectFlipped(bool /*flipped*/) const {
    return controlView() == nullptr ? QRectF() : designRect(*controlView());
}

QRectF SliderCell::knobRectFlipped(bool flipped) const {
    const QRectF bar = barRectFlipped(flipped);
    const double size = knobThickness();
    const double travel = std::max(0.0, bar.width() - size);
    return {bar.x() + fraction() * travel, bar.y() + (bar.height() - size) / 2, size, size};
}

void SliderCell::drawWithFrame(QPainter& painter) {
    drawBarInside(painter, barRectFlipped(true), true);
    drawKnob(painter, knobRectFlipped(true));
}

void SliderCell::drawBarInside(QPainter& painter, const QRectF& rect, bool /*flipped*/) {
    const QWidget* view = controlView();
    if (view == nullptr) return;
    QStyleOptionSlider option = styleOption(*this, *view, QStyle::SC_SliderGroove);
    option.rect = rect.toAlignedRect();
    view->style()->drawComplexControl(QStyle::CC_Slider, &option, &painter, view);
}

void SliderCell::drawKnob(QPainter& painter, const QRectF& knobRect) {
    const QWidget* view = controlView();
    if (view == nullptr) return;
    const QStyleOptionSlider option = styleOption(*this, *view, QStyle::SC_SliderHandle);
    const QRectF handle =
        view->style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, view);
    painter.save();
    painter.translate(knobRect.center() - handle.center());
    view->style()->drawComplexControl(QStyle::CC_Slider, &option, &painter, view);
    painter.restore();
}

} // namespace cocoa
