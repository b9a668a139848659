#include "controls/RixSlider.h"

#include "tests/support/TestApplication.h"

#include <gtest/gtest.h>

using cocoa::Image;

namespace {

Image bitmap(int width, int height, const QColor& colour) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(colour);
    return Image(image);
}

class RixSliderTest : public testing::Test {
protected:
    RixSliderTest() { support::offscreenApplication(); }
};

TEST_F(RixSliderTest, AwakeningKeepsItsOwnCellAndReplacesAnother) {
    RixSlider slider;
    slider.setMaxValue(180.0);
    slider.setProperty("barFillImage", "slider_track_fill");
    slider.awakeFromNib();
    EXPECT_EQ(slider.maxValue(), 180.0);
    EXPECT_FALSE(slider.barFillImage().isNull());
    slider.setCell(std::make_unique<cocoa::SliderCell>());
    slider.setKnobImage(bitmap(4, 4, Qt::red));
    EXPECT_TRUE(slider.knobImage().isNull());
    slider.awakeFromNib();
    EXPECT_FALSE(slider.barFillImage().isNull());
}

TEST_F(RixSliderTest, TheKnobIsBrighterUnderThePointerUnlessTheSliderIsDisabled) {
    const auto slider = RixSlider::initWithKnobImage(bitmap(20, 20, QColor(100, 100, 100)));
    slider->resize(120, 20);
    const auto knob = [&] { return support::picture(*slider).pixelColor(5, 10); };
    const QColor usual = knob();
    slider->setAttribute(Qt::WA_UnderMouse);
    EXPECT_GT(knob().red(), usual.red() + 10);
    slider->setEnabled(false);
    EXPECT_EQ(knob(), usual);
}

TEST_F(RixSliderTest, TheTwoPartsMeetUnderTheKnobOnWholePixels) {
    // The smallest of knobs, so that the seam shows beside it.
    const auto slider = RixSlider::initWithKnobImage(bitmap(14, 1, Qt::red), bitmap(2, 10, Qt::green),
                                                     bitmap(2, 10, Qt::blue), {}, {});
    slider->cell()->setControlSize(cocoa::ControlSize::mini);
    slider->resize(214, 20);
    const struct {
        double scale, value;
        const char* expected;
    } cases[] = {
        {1, 0, "7. 207g "},    {1, 0.5, "107b 107g "},   {1, 0.503, "108b 106g "},   {1, 1, "207b 7. "},
        {1.5, 0, "11. 310g "}, {1.5, 0.5, "161b 160g "}, {1.5, 0.503, "161b 160g "}, {1.5, 1, "311b 10. "},
        {2, 0, "14. 414g "},   {2, 0.5, "214b 214g "},   {2, 0.503, "215b 213g "},   {2, 1, "414b 14. "},
    };
    for (const auto& each : cases) {
        slider->setDoubleValue(1.0 - each.value); // another place first: nothing of it may remain
        support::picture(*slider, each.scale);
        slider->setDoubleValue(each.value);
        const QImage picture = support::picture(*slider, each.scale);
        EXPECT_EQ(support::colours(picture, picture.height() / 2), each.expected) << each.scale;
    }
}

TEST_F(RixSliderTest, TheKnobStandsUprightWithItsTopAtTheKnobRectanglesTop) {
    QImage twoColoured(14, 14, QImage::Format_ARGB32_Premultiplied);
    twoColoured.fill(Qt::red);
    QPainter(&twoColoured).fillRect(0, 7, 14, 7, Qt::blue);
    const auto slider = RixSlider::initWithKnobImage(Image(twoColoured));
    slider->cell()->setControlSize(cocoa::ControlSize::mini);
    slider->resize(114, 20);
    slider->setDoubleValue(0.5); // the knob's rectangle: 50, 3, 14, 14
    for (const double scale : {1.0, 1.5, 2.0}) {
        SCOPED_TRACE(scale);
        const QImage picture = support::picture(*slider, scale);
        const auto at = [&](double x, double y) {
            return picture.pixelColor(int(x * scale), int(y * scale));
        };
        EXPECT_EQ(at(57, 2.4).alpha(), 0);
        EXPECT_EQ(at(51, 5), QColor(Qt::red));
        EXPECT_EQ(at(63, 5), QColor(Qt::red));
        EXPECT_EQ(at(57, 15), QColor(Qt::blue));
        EXPECT_EQ(at(57, 17.6).alpha(), 0);
        EXPECT_EQ(at(49, 10).alpha(), 0);
        EXPECT_EQ(at(65, 10).alpha(), 0);
    }
}

} // namespace
