#include "controls/RixSlider.h"

#include "platform/cocoa/Scale.h"

using cocoa::Image;

RixSlider::RixSlider(QWidget* parent) : Slider(parent) {
    setCell(std::make_unique<RixSliderCell>());
}

std::unique_ptr<RixSlider> RixSlider::withCell(std::unique_ptr<RixSliderCell> cell) {
    if (!cell) return nullptr;
    auto slider = std::make_unique<RixSlider>();
    slider->setCell(std::move(cell));
    return slider;
}

std::unique_ptr<RixSlider> RixSlider::initWithKnobImage(const Image& knob) {
    return withCell(RixSliderCell::initWithKnobImage(knob));
}

std::unique_ptr<RixSlider> RixSlider::initWithKnobImage(const Image& knob, const Image& barFill,
                                                        const Image& barLeftAge, const Image& barRightAge) {
    return withCell(RixSliderCell::initWithKnobImage(knob, barFill, barLeftAge, barRightAge));
}

std::unique_ptr<RixSlider> RixSlider::initWithKnobImage(const Image& knob, const Image& barFill,
                                                        const Image& barFillBeforeKnob,
                                                        const Image& barLeftAge, const Image& barRightAge) {
    return withCell(
        RixSliderCell::initWithKnobImage(knob, barFill, barFillBeforeKnob, barLeftAge, barRightAge));
}

void RixSlider::awakeFromNib() {
    if (!rixCell()) setCell(std::make_unique<RixSliderCell>());
    const std::pair<const char*, void (RixSlider::*)(const Image&)> images[] = {
        {"knobImage", &RixSlider::setKnobImage},
        {"barFillImage", &RixSlider::setBarFillImage},
        {"barFillBeforeKnobImage", &RixSlider::setBarFillBeforeKnobImage},
        {"barLeftAgeImage", &RixSlider::setBarLeftAgeImage},
        {"barRightAgeImage", &RixSlider::setBarRightAgeImage},
    };
    for (const auto& [name, set] : images)
        if (const QVariant image = property(name); image.isValid())
            (this->*set)(Image::named(image.toString()));
}

void RixSlider::setNeedsDisplayInRect(const QRectF&) {
    Slider::setNeedsDisplayInRect(cocoa::designRect(*this));
}

Image RixSlider::knobImage() const {
    return rixCell() ? rixCell()->knobImage() : Image();
}
void RixSlider::setKnobImage(const Image& image) {
    if (RixSliderCell* cell = rixCell()) cell->setKnobImage(image);
}

Image RixSlider::barFillImage() const {
    return rixCell() ? rixCell()->barFillImage() : Image();
}
void RixSlider::setBarFillImage(const Image& image) {
    if (RixSliderCell* cell = rixCell()) cell->setBarFillImage(image);
}

Image RixSlider::barFillBeforeKnobImage() const {
    return rixCell() ? rixCell()->barFillBeforeKnobImage() : Image();
}
void RixSlider::setBarFillBeforeKnobImage(const Image& image) {
    if (RixSliderCell* cell = rixCell()) cell->setBarFillBeforeKnobImage(image);
}

Image RixSlider::barLeftAgeImage() const {
    return rixCell() ? rixCell()->barLeftAgeImage() : Image();
}
void RixSlider::setBarLeftAgeImage(const Image& image) {
    if (RixSliderCell* cell = rixCell()) cell->setBarLeftAgeImage(image);
}

Image RixSlider::barRightAgeImage() const {
    return rixCell() ? rixCell()->barRightAgeImage() : Image();
}
void RixSlider::setBarRightAgeImage(const Image& image) {
    if (RixSliderCell* cell = rixCell()) cell->setBarRightAgeImage(image);
}
