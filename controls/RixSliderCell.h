#pragma once

#include "platform/cocoa/Image.h"
#include "platform/cocoa/SliderCell.h"

#include <memory>
#include <optional>

/// A slider's drawing from images: a knob, and a bar in two parts that meet under the knob's centre, each a
/// start cap, a stretched centre and an end cap. Every image may be null. With none at all the platform's
/// slider is drawn; without a knob image, the platform's knob. Under the pointer the knob image glows a
/// little.
///
/// Rectangles are in the slider's coordinates: points, y grows downward.
///
/// Threads: main thread only.
class RixSliderCell : public cocoa::SliderCell {
public:
    /// No images.
    RixSliderCell() = default;

    /// Null when every image given is null. The four-image form fills the whole bar with `barFill`.
    static std::unique_ptr<RixSliderCell> initWithKnobImage(const cocoa::Image& knob);
    static std::unique_ptr<RixSliderCell> initWithKnobImage(const cocoa::Image& knob,
                                                            const cocoa::Image& barFill,
                                                            const cocoa::Image& barLeftAge,
                                                            const cocoa::Image& barRightAge);
    static std::unique_ptr<RixSliderCell> initWithKnobImage(const cocoa::Image& knob,
                                                            const cocoa::Image& barFill,
                                                            const cocoa::Image& barFillBeforeKnob,
                                                            const cocoa::Image& barLeftAge,
                                                            const cocoa::Image& barRightAge);

    const cocoa::Image& knobImage() const { return m_knobImage; }
    void setKnobImage(const cocoa::Image& image) { m_knobImage = image; }

    /// Centre, and start cap, of the bar after the knob. Also fills the bar before the knob while that has
    /// none.
    const cocoa::Image& barFillImage() const { return m_barFillImage; }
    void setBarFillImage(const cocoa::Image& image);

    /// Centre, and end cap, of the bar before the knob. Also fills the bar after the knob while that has
    /// none.
    const cocoa::Image& barFillBeforeKnobImage() const { return m_barFillBeforeKnobImage; }
    void setBarFillBeforeKnobImage(const cocoa::Image& image);

    /// The cap at the bar's left end.
    const cocoa::Image& barLeftAgeImage() const { return m_barLeftAgeImage; }
    void setBarLeftAgeImage(const cocoa::Image& image) { m_barLeftAgeImage = image; }

    /// The cap at the bar's right end.
    const cocoa::Image& barRightAgeImage() const { return m_barRightAgeImage; }
    void setBarRightAgeImage(const cocoa::Image& image) { m_barRightAgeImage = image; }

    /// The two parts of the bar as they were last drawn.
    QRectF createBeforeKnobRect() const;
    QRectF createAfterKnobRect() const;

    /// The lower left corner of the knob's image for a knob rectangle; none for a bar of width 0.
    std::optional<QPointF> createKnobPoint(const QRectF& knobRect) const;

    void drawBarInside(QPainter& painter, const QRectF& rect, bool flipped) override;
    void drawKnob(QPainter& painter, const QRectF& knobRect) override;

private:
    bool hasNoImages() const;
    bool isUnderPointer() const;

    QRectF m_currentKnobRect;
    QRectF m_barRect;
    bool m_flipped = false;
    cocoa::Image m_knobImage;
    cocoa::Image m_barFillImage;
    cocoa::Image m_barFillBeforeKnobImage;
    cocoa::Image m_barLeftAgeImage;
    cocoa::Image m_barRightAgeImage;
};
