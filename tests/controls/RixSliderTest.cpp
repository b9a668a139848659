#include "controls/RixSlider.h"

#include "tests/support/TestApplication.h"

#include <QPaintEvent>
#include <gtest/gtest.h>
#include <sstream>

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

    /// Draws into a canvas so that the cell keeps the rectangles.
    static QImage draw(RixSliderCell& cell, const QRectF& bar, const QRectF& knob) {
        QImage canvas(220, 40, QImage::Format_ARGB32_Premultiplied);
        canvas.fill(Qt::transparent);
        QPainter painter(&canvas);
        cell.drawBarInside(painter, bar, true);
        cell.drawKnob(painter, knob);
        return canvas;
    }
};

TEST_F(RixSliderTest, BarAndKnobStandWhereTheImagesAndTheKnobRectanglePutThem) {
    const struct {
        const char* what;
        QRectF bar, knob;
        int knobSize, beforeHeight;
        const char* expected; ///< The part before the knob, the part after it, the knob image's corner.
    } cases[] = {
        {"usual", {0, 0, 200, 20}, {50, 2, 21, 21}, 16, 6, "0 3 58 6, 58 3 142 6, 51.25 18"},
        {"bar elsewhere", {10, 5, 200, 20}, {50, 2, 21, 21}, 16, 4, "10 2 58 4, 58 3 142 6, 51.25 18"},
        {"large image", {0, 0, 100, 20}, {86, 3, 14, 14}, 20, 6, "0 3 96 6, 96 3 4 6, 80.84 23"},
        {"no image", {0, 0, 200, 20}, {90, 2, 14, 14}, 0, 6, "0 3 0 6, 0 3 200 6, 96.3 2"},
        {"no width", {0, 0, 0, 20}, {50, 2, 14, 14}, 16, 6, "0 3 58 6, 58 3 -58 6"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        const auto cell = RixSliderCell::initWithKnobImage(bitmap(each.knobSize, each.knobSize, Qt::red),
                                                           bitmap(4, 6, Qt::green),
                                                           bitmap(4, each.beforeHeight, Qt::blue), {}, {});
        const QImage drawn = draw(*cell, each.bar, each.knob);
        std::ostringstream places;
        const auto tell = [&](const QRectF& part) {
            places << part.x() << ' ' << part.y() << ' ' << part.width() << ' ' << part.height();
        };
        tell(cell->createBeforeKnobRect());
        places << ", ";
        tell(cell->createAfterKnobRect());
        const auto corner = cell->createKnobPoint(each.knob);
        if (corner) places << ", " << corner->x() << ' ' << corner->y();
        EXPECT_EQ(places.str(), each.expected);
        const bool showsKnob = support::colours(drawn, 10).find('r') != std::string::npos;
        EXPECT_EQ(showsKnob, each.knobSize > 0 && corner);
    }
}

TEST_F(RixSliderTest, NoImageGivesNoCellAndNoSliderAndOnlyTheSettersPairTheFills) {
    EXPECT_EQ(RixSliderCell::initWithKnobImage({}), nullptr);
    EXPECT_EQ(RixSliderCell::initWithKnobImage({}, {}, {}, {}), nullptr);
    EXPECT_EQ(RixSliderCell::initWithKnobImage({}, {}, {}, {}, {}), nullptr);
    EXPECT_EQ(RixSlider::initWithKnobImage({}, {}, {}, {}, {}), nullptr);

    const Image fill = bitmap(4, 6, Qt::green);
    const Image other = bitmap(4, 9, Qt::blue);
    EXPECT_EQ(RixSliderCell::initWithKnobImage({}, fill, {}, {})->barFillBeforeKnobImage().size(),
              fill.size());
    const auto unpaired = RixSlider::initWithKnobImage({}, fill, {}, {}, {});
    ASSERT_NE(unpaired, nullptr);
    EXPECT_TRUE(unpaired->barFillBeforeKnobImage().isNull());

    RixSlider slider;
    slider.setBarFillImage(fill);
    EXPECT_EQ(slider.barFillBeforeKnobImage().size(), fill.size());
    slider.setBarFillBeforeKnobImage(other);
    EXPECT_EQ(slider.barFillBeforeKnobImage().size(), other.size());
    EXPECT_EQ(slider.barFillImage().size(), fill.size());

    RixSliderCell fresh;
    fresh.setBarFillBeforeKnobImage(other);
    EXPECT_EQ(fresh.barFillImage().size(), other.size());
}

TEST_F(RixSliderTest, AwakeningKeepsItsOwnCellReplacesAnotherAndTakesTheImagesThatTheLayoutNames) {
    RixSlider slider;
    slider.setMaxValue(180.0);
    slider.awakeFromNib();
    EXPECT_EQ(slider.maxValue(), 180.0);
    slider.setCell(std::make_unique<cocoa::SliderCell>());
    slider.setKnobImage(bitmap(4, 4, Qt::red));
    EXPECT_TRUE(slider.knobImage().isNull());

    slider.setProperty("barFillImage", "slider_track_fill");
    slider.setProperty("barFillBeforeKnobImage", "slider_position_fill");
    slider.setProperty("barRightAgeImage", "slider_track_right");
    slider.awakeFromNib();
    EXPECT_EQ(slider.barFillImage().size(), QSizeF(4, 10));
    EXPECT_EQ(slider.barFillBeforeKnobImage().size(), QSizeF(4, 10));
    EXPECT_EQ(slider.barRightAgeImage().size(), QSizeF(2, 10));
    EXPECT_TRUE(slider.barLeftAgeImage().isNull());
}

TEST_F(RixSliderTest, WithoutImagesItLooksLikeThePlatformsSlider) {
    RixSlider skinned;
    cocoa::Slider plain;
    for (cocoa::Slider* slider : {static_cast<cocoa::Slider*>(&skinned), &plain}) {
        slider->resize(160, 24);
        slider->setDoubleValue(0.3);
    }
    EXPECT_EQ(support::picture(skinned), support::picture(plain));
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

/// Counts what it is asked to redraw.
class WatchedSlider : public RixSlider {
public:
    QRegion painted;

protected:
    void paintEvent(QPaintEvent* event) override {
        painted += event->region();
        RixSlider::paintEvent(event);
    }
};

TEST_F(RixSliderTest, ARequestForAPartRedrawsAll) {
    WatchedSlider slider;
    slider.resize(160, 24);
    slider.show();
    ASSERT_TRUE(support::runUntil([&] { return !slider.painted.isEmpty(); }));
    slider.painted = {};
    slider.setNeedsDisplayInRect({3, 3, 2, 2});
    ASSERT_TRUE(support::runUntil([&] { return !slider.painted.isEmpty(); }));
    EXPECT_EQ(slider.painted.boundingRect(), slider.rect());
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
