#include "controls/RixSliderCell.h"

#include "platform/cocoa/ThreePartImage.h"

using cocoa::Image;

namespace {

/// Brightens a picture that has just been drawn.
void glow(QPainter& painter, const Image& image, const QPointF& topLeft) {
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Plus);
    painter.setOpacity(0.2);
    image.drawAtPoint(painter, topLeft);
    painter.restore();
}

} // namespace

std::unique_ptr<RixSliderCell> RixSliderCell::initWithKnobImage(const Image& knob) {
    return initWithKnobImage(knob, {}, {}, {}, {});
}

std::unique_ptr<RixSliderCell> RixSliderCell::initWithKnobImage(const Image& knob, const Image& barFill,
                                                                const Image& barLeftAge,
                                                                const Image& barRightAge) {
    return initWithKnobImage(knob, barFill, barFill, barLeftAge, barRightAge);
}

std::unique_ptr<RixSliderCell> RixSliderCell::initWithKnobImage(const Image& knob, const Image& barFill,
                                                                const Image& barFillBeforeKnob,
                                                                const Image& barLeftAge,
                                                                const Image& barRightAge) {
    auto cell = std::make_unique<RixSliderCell>();
    cell->m_knobImage = knob;
    cell->m_barFillImage = barFill;
    cell->m_barFillBeforeKnobImage = barFillBeforeKnob;
    cell->m_barLeftAgeImage = barLeftAge;
    cell->m_barRightAgeImage = barRightAge;
    if (cell->hasNoImages()) return nullptr;
    return cell;
}

void RixSliderCell::setBarFillImage(const Image& image) {
    m_barFillImage = image;
    if (m_barFillBeforeKnobImage.isNull()) m_barFillBeforeKnobImage = image;
}

void RixSliderCell::setBarFillBeforeKnobImage(const Image& image) {
    m_barFillBeforeKnobImage = image;
    if (m_barFillImage.isNull()) m_barFillImage = image;
}

bool RixSliderCell::hasNoImages() const {
    return m_knobImage.isNull() && m_barFillImage.isNull() && m_barFillBeforeKnobImage.isNull() &&
           m_barLeftAgeImage.isNull() && m_barRightAgeImage.isNull();
}

QRectF RixSliderCell::createBeforeKnobRect() const {
    const double height = m_barFillBeforeKnobImage.size().height();
    return {m_barRect.x(), 0.5 * height, 0.5 * m_knobImage.size().width() + m_currentKnobRect.x(), height};
}

QRectF RixSliderCell::createAfterKnobRect() const {
    const double height = m_barFillImage.size().height();
    const double x = 0.5 * m_knobImage.size().width() + m_currentKnobRect.x();
    return {x, 0.5 * height, m_barRect.width() - x, height};
}

std::optional<QPointF> RixSliderCell::createKnobPoint(const QRectF& knobRect) const {
    if (m_barRect.width() == 0.0) return std::nullopt;
    const QSizeF image = m_knobImage.size();
    const double usableWidth = m_barRect.width() - (image.width() - knobRect.width());
    return QPointF(usableWidth * knobRect.x() / m_barRect.width(), image.height() + knobRect.y());
}

void RixSliderCell::drawBarInside(QPainter& painter, const QRectF& rect, bool flipped) {
    if (hasNoImages()) return SliderCell::drawBarInside(painter, rect, flipped);
    m_barRect = rect;
    m_flipped = flipped;
    const QRectF before = createBeforeKnobRect();
    const QRectF after = createAfterKnobRect();
    if (minValue() != doubleValue())
        cocoa::drawThreePartImage(painter, before, m_barLeftAgeImage, m_barFillBeforeKnobImage,
                                  m_barFillBeforeKnobImage);
    if (maxValue() != doubleValue())
        cocoa::drawThreePartImage(painter, after, m_barFillImage, m_barFillImage, m_barRightAgeImage);
}

void RixSliderCell::drawKnob(QPainter& painter, const QRectF& knobRect) {
    if (m_knobImage.isNull()) return SliderCell::drawKnob(painter, knobRect);
    m_currentKnobRect = knobRect;
    // The bar was drawn for the knob's former place; now its parts meet under the new one.
    drawBarInside(painter, m_barRect, m_flipped);
    const std::optional<QPointF> lowerLeft = createKnobPoint(knobRect);
    if (!lowerLeft) return;
    const QPointF topLeft = *lowerLeft - QPointF(0.0, m_knobImage.size().height());
    m_knobImage.drawAtPoint(painter, topLeft);
    if (isUnderPointer()) glow(painter, m_knobImage, topLeft);
}

bool RixSliderCell::isUnderPointer() const {
    const QWidget* view = controlView();
    return view != nullptr && view->isEnabled() && view->underMouse();
}
