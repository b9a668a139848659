#pragma once

#include "controls/RixSliderCell.h"
#include "platform/cocoa/Nib.h"
#include "platform/cocoa/Slider.h"

/// A slider that draws through a RixSliderCell. Its images are its cell's; a layout file names them in string
/// properties called as the images are (`knobImage` and so on). Changing an image asks for no redraw.
///
/// Threads: main thread only.
class RixSlider : public cocoa::Slider, public cocoa::NibAwaking {
    Q_OBJECT
public:
    /// With a cell that has no images, so that values set by a layout stay when it awakes.
    explicit RixSlider(QWidget* parent = nullptr);

    /// As the cell's functions of this name; null when the cell would be.
    static std::unique_ptr<RixSlider> initWithKnobImage(const cocoa::Image& knob);
    static std::unique_ptr<RixSlider> initWithKnobImage(const cocoa::Image& knob, const cocoa::Image& barFill,
                                                        const cocoa::Image& barLeftAge,
                                                        const cocoa::Image& barRightAge);
    static std::unique_ptr<RixSlider> initWithKnobImage(const cocoa::Image& knob, const cocoa::Image& barFill,
                                                        const cocoa::Image& barFillBeforeKnob,
                                                        const cocoa::Image& barLeftAge,
                                                        const cocoa::Image& barRightAge);

    /// Gives the slider a RixSliderCell without images when its cell is of another kind, then takes the
    /// images that the layout names.
    void awakeFromNib() override;

    /// Always redraws the whole slider.
    void setNeedsDisplayInRect(const QRectF& rect) override;

    /// Null, and without effect, while the cell is of another kind.
    cocoa::Image knobImage() const;
    void setKnobImage(const cocoa::Image& image);
    cocoa::Image barFillImage() const;
    void setBarFillImage(const cocoa::Image& image);
    cocoa::Image barFillBeforeKnobImage() const;
    void setBarFillBeforeKnobImage(const cocoa::Image& image);
    cocoa::Image barLeftAgeImage() const;
    void setBarLeftAgeImage(const cocoa::Image& image);
    cocoa::Image barRightAgeImage() const;
    void setBarRightAgeImage(const cocoa::Image& image);

private:
    static std::unique_ptr<RixSlider> withCell(std::unique_ptr<RixSliderCell> cell);
    RixSliderCell* rixCell() const { return dynamic_cast<RixSliderCell*>(cell()); }
};
