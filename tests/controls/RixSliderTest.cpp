#include "controls/RixSlider.h"

#include "tests/support/TestApplication.h"

#include <QPaintEvent>
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
    struct Case {
        const char* name;
        QRectF bar, knob;
        QSize knobImage;
        int fillHeight, beforeHeight;
        QRectF before, after;
        std::optional<QPointF> point;
    };
    const Case cases[] = {
        {"worked example",
         {0, 0, 200, 20},
         {50, 2, 21, 21},
         {16, 16},
         6,
         6,
         {0, 3, 58, 6},
         {58, 3, 142, 6},
         QPointF(51.25, 18)},
        {"the bar's x shifts only the first part",
         {10, 5, 200, 20},
         {50, 2, 21, 21},
         {16, 16},
         6,
         4,
         {10, 2, 58, 4},
         {58, 3, 142, 6},
         QPointF(51.25, 18)},
        {"image wider than the knob rectangle",
         {0, 0, 100, 20},
         {86, 3, 14, 14},
         {20, 20},
         10,
         10,
         {0, 5, 96, 10},
         {96, 5, 4, 10},
         QPointF(80.84, 23)},
        {"bar of width 0",
         {0, 0, 0, 20},
         {0, 0, 14, 14},
         {16, 16},
         6,
         6,
         {0, 3, 8, 6},
         {8, 3, -8, 6},
         std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto cell = RixSliderCell::initWithKnobImage(
            bitmap(c.knobImage.width(), c.knobImage.height(), Qt::red), bitmap(4, c.fillHeight, Qt::green),
            bitmap(4, c.beforeHeight, Qt::blue), {}, {});
        draw(*cell, c.bar, c.knob);
        EXPECT_EQ(cell->createBeforeKnobRect(), c.before);
        EXPECT_EQ(cell->createAfterKnobRect(), c.after);
        const auto point = cell->createKnobPoint(c.knob);
        ASSERT_EQ(point.has_value(), c.point.has_value());
        if (point) {
            EXPECT_NEAR(point->x(), c.point->x(), 1e-9);
            EXPECT_NEAR(point->y(), c.point->y(), 1e-9);
        }
    }
}

TEST_F(RixSliderTest, ABarOfNoWidthDrawsNoKnob) {
    const auto cell = RixSliderCell::initWithKnobImage(bitmap(16, 16, Qt::red));
    QImage empty(220, 40, QImage::Format_ARGB32_Premultiplied);
    empty.fill(Qt::transparent);
    EXPECT_EQ(draw(*cell, {0, 0, 0, 20}, {50, 2, 14, 14}), empty);
}

TEST_F(RixSliderTest, WithoutAKnobImageTheWholeBarIsThePartAfterTheKnob) {
    RixSliderCell cell;
    cell.setBarFillImage(bitmap(4, 6, Qt::green));
    cell.setDoubleValue(0.5);
    draw(cell, {0, 0, 200, 20}, {90, 2, 14, 14});
    EXPECT_EQ(cell.createBeforeKnobRect().width(), 0.0);
    EXPECT_EQ(cell.createAfterKnobRect(), QRectF(0, 3, 200, 6));
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

TEST_F(RixSliderTest, AwakeningKeepsItsOwnCellAndReplacesAnother) {
    RixSlider slider;
    slider.setMaxValue(180.0);
    slider.awakeFromNib();
    EXPECT_EQ(slider.maxValue(), 180.0);
    slider.setCell(std::make_unique<cocoa::SliderCell>());
    slider.setKnobImage(bitmap(4, 4, Qt::red));
    EXPECT_TRUE(slider.knobImage().isNull());
    slider.awakeFromNib();
    EXPECT_NE(dynamic_cast<RixSliderCell*>(slider.cell()), nullptr);
}

TEST_F(RixSliderTest, AwakeningTakesTheImagesThatTheLayoutNames) {
    RixSlider slider;
    slider.setProperty("barFillImage", QStringLiteral("slider_track_fill"));
    slider.setProperty("barFillBeforeKnobImage", QStringLiteral("slider_position_fill"));
    slider.setProperty("barRightAgeImage", QStringLiteral("slider_track_right"));
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

struct Scale : RixSliderTest, testing::WithParamInterface<double> {};

TEST_P(Scale, TheTwoPartsMeetUnderTheKnob) {
    const double scale = GetParam();
    // The smallest of knobs, so that the seam shows beside it.
    const auto slider = RixSlider::initWithKnobImage(bitmap(14, 1, Qt::red), bitmap(2, 10, Qt::green),
                                                     bitmap(2, 10, Qt::blue), {}, {});
    slider->cell()->setControlSize(cocoa::ControlSize::mini);
    slider->resize(214, 20);
    struct Case {
        double value;
        double seam; ///< Where blue ends and green begins, in points.
        QRgb left, right;
    };
    const Case cases[] = {{0.0, 7, qRgb(0, 0, 0), Qt::green},
                          {0.5, 107, QColor(Qt::blue).rgb(), QColor(Qt::green).rgb()},
                          {0.503, 107.6, QColor(Qt::blue).rgb(), QColor(Qt::green).rgb()},
                          {1.0, 207, QColor(Qt::blue).rgb(), qRgb(0, 0, 0)}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.value);
        slider->setDoubleValue(1.0 - c.value); // another place first: nothing of it may remain
        support::picture(*slider, scale);
        slider->setDoubleValue(c.value);
        const QImage picture = support::picture(*slider, scale);
        const int row = int(10 * scale);
        const int seam = qRound(c.seam * scale);
        const int last = picture.width() - 1;
        for (int x = 0; x <= last; ++x) {
            const QColor at = picture.pixelColor(x, row);
            if (c.value == 0.0 && x < seam) {
                EXPECT_NE(at, QColor(Qt::blue)) << x;
            } else if (c.value == 1.0 && x >= seam) {
                continue;
            } else {
                ASSERT_EQ(at, x < seam ? QColor(Qt::blue) : QColor(Qt::green)) << x;
            }
        }
    }
}

TEST_P(Scale, TheKnobStandsUprightWithItsTopAtTheKnobRectanglesTop) {
    const double scale = GetParam();
    QImage twoColoured(14, 14, QImage::Format_ARGB32_Premultiplied);
    twoColoured.fill(Qt::red);
    QPainter(&twoColoured).fillRect(0, 7, 14, 7, Qt::blue);
    const auto slider = RixSlider::initWithKnobImage(Image(twoColoured));
    slider->cell()->setControlSize(cocoa::ControlSize::mini);
    slider->resize(114, 20);
    slider->setDoubleValue(0.5); // the knob's rectangle: 50, 3, 14, 14
    const QImage picture = support::picture(*slider, scale);
    const auto at = [&](double x, double y) { return picture.pixelColor(int(x * scale), int(y * scale)); };
    EXPECT_EQ(at(57, 2.4).alpha(), 0);
    EXPECT_EQ(at(57, 5), QColor(Qt::red));
    EXPECT_EQ(at(57, 15), QColor(Qt::blue));
    EXPECT_EQ(at(57, 17.6).alpha(), 0);
    EXPECT_EQ(at(49, 10).alpha(), 0);
    EXPECT_EQ(at(51, 5), QColor(Qt::red));
    EXPECT_EQ(at(63, 5), QColor(Qt::red));
    EXPECT_EQ(at(65, 10).alpha(), 0);
}

INSTANTIATE_TEST_SUITE_P(Scales, Scale, testing::Values(1.0, 1.5, 2.0));

} // namespace
