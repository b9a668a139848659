#include "platform/cocoa/Slider.h"
#include "platform/cocoa/RunLoop.h"
#include "tests/support/TestApplication.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QTest>
#include <QToolTip>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using cocoa::Slider;

class SliderTest : public testing::Test {
protected:
    SliderTest() {
        slider.setMaxValue(200);
        slider.setDoubleValue(100);
        slider.setAction([this] { ++actions; });
        slider.resize(220, 24);
        slider.show();
        slider.cell()->setControlSize(
            cocoa::ControlSize::regular); // knob 20: 200 points of travel, one a unit
    }
    QPoint at(double value) const { return {int(10 + value), 12}; }
    double afterKey(Qt::Key key, double from) {
        slider.setDoubleValue(from);
        QTest::keyClick(&slider, key);
        return slider.doubleValue();
    }
    double afterWheel(QPoint angle) {
        QWheelEvent event({5, 5}, {5, 5}, {}, angle, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&slider, &event);
        return slider.doubleValue();
    }

    QApplication& application = support::offscreenApplication();
    Slider slider;
    int actions = 0;
};

TEST_F(SliderTest, KeysMoveByStepsAndStopAtTheEnds) {
    const struct {
        Qt::Key key;
        double from;
        double to;
    } cases[] = {{Qt::Key_Right, 100, 102}, {Qt::Key_Left, 100, 98},    {Qt::Key_Up, 199, 200},
                 {Qt::Key_Down, 1, 0},      {Qt::Key_PageUp, 100, 120}, {Qt::Key_PageDown, 10, 0},
                 {Qt::Key_Home, 77, 0},     {Qt::Key_End, 77, 200}};
    for (const auto& each : cases)
        EXPECT_DOUBLE_EQ(afterKey(each.key, each.from), each.to) << each.key;
    EXPECT_EQ(actions, 8);
    afterKey(Qt::Key_End, 200);
    EXPECT_EQ(actions, 8) << "nothing changed, nothing to tell";
}

TEST_F(SliderTest, WheelMovesVerticallyAndIgnoresHorizontalScrolling) {
    EXPECT_DOUBLE_EQ(afterWheel({0, 120}), 104);
    EXPECT_DOUBLE_EQ(afterWheel({0, -240}), 96);
    EXPECT_DOUBLE_EQ(afterWheel({240, 10}), 96);
}

TEST_F(SliderTest, StepsSnappingAndToolTipsAreOptions) {
    slider.setStep(5);
    slider.setSnap(100, 8);
    slider.setShowsValueAtPointer(true);
    slider.setValueText([](double value) { return QString("at %1").arg(value); });
    EXPECT_DOUBLE_EQ(afterKey(Qt::Key_Right, 100), 105) << "a key does not snap";
    EXPECT_DOUBLE_EQ(afterKey(Qt::Key_PageDown, 100), 70);
    EXPECT_DOUBLE_EQ(afterWheel({0, 60}), 72.5);
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(20));
    EXPECT_EQ(QToolTip::text(), "at 20");
    QTest::mouseMove(&slider, at(107));
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 100);
    EXPECT_EQ(QToolTip::text(), "at 107");
    QTest::mouseMove(&slider, at(108));
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 108);
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(108));
    EXPECT_FALSE(slider.hasFocus()) << "a click leaves the keyboard where it is";
    QHelpEvent rest(QEvent::ToolTip, at(30), slider.mapToGlobal(at(30)));
    QApplication::sendEvent(&slider, &rest);
    EXPECT_EQ(QToolTip::text(), "at 30");
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 108);
}

TEST_F(SliderTest, ActionsAreLimitedButTheLastValueIsReported) {
    std::vector<double> reported;
    slider.setAction([&] { reported.push_back(slider.doubleValue()); });
    slider.setActionInterval(std::chrono::hours(1));
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(10));
    for (int value = 11; value < 60; ++value)
        QTest::mouseMove(&slider, at(value));
    EXPECT_EQ(reported, std::vector<double>{10});
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(59));
    EXPECT_EQ(reported, (std::vector<double>{10, 59}));

    slider.setActionInterval(std::chrono::milliseconds(50));
    ASSERT_TRUE(support::runUntil([&] {
        afterKey(Qt::Key_Home, 30); // at once when the interval is over
        return reported.back() == 0;
    }));
    afterKey(Qt::Key_End, 0);
    slider.setDoubleValue(5);
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 200) << "it stays until it has been reported";
    EXPECT_TRUE(support::runUntil([&] { return reported.back() == 200; }));
}

TEST_F(SliderTest, AClickJumpsAndAHeldKnobKeepsItsPlaceUnderThePointer) {
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(30));
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 30);
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(30));

    QTest::mousePress(&slider, Qt::LeftButton, {}, at(36)); // six points right of the knob's centre
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 30);
    QTest::mouseMove(&slider, at(86));
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 80);
    slider.setDoubleValue(5);
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 80) << "the player's tick must not pull the knob away";
    QTest::mouseMove(&slider, at(900));
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 200);
    EXPECT_FALSE(cocoa::RunLoop::isInDefaultMode());
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(900));
    EXPECT_TRUE(cocoa::RunLoop::isInDefaultMode());
    slider.setDoubleValue(5);
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 5);
}

TEST_F(SliderTest, ASliderDestroyedWhileHeldReleasesTheRunLoop) {
    {
        Slider held;
        held.resize(100, 24);
        held.show();
        QTest::mousePress(&held, Qt::LeftButton, {}, {50, 12});
        EXPECT_FALSE(cocoa::RunLoop::isInDefaultMode());
        held.hide();
        EXPECT_TRUE(cocoa::RunLoop::isInDefaultMode());
        held.show();
        QTest::mousePress(&held, Qt::LeftButton, {}, {50, 12});
    }
    EXPECT_TRUE(cocoa::RunLoop::isInDefaultMode());
}

TEST_F(SliderTest, InvalidRangesAndValuesAreIgnored) {
    slider.setDoubleValue(std::nan(""));
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 100);
    slider.setDoubleValue(1e300);
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 200);
    for (const double maximum : {0.0, -5.0, std::numeric_limits<double>::quiet_NaN()}) {
        slider.setMaxValue(maximum); // a stream of unknown length
        EXPECT_EQ(slider.cell()->fraction(), 0) << maximum;
        EXPECT_FALSE(support::picture(slider).isNull());
        QTest::mouseClick(&slider, Qt::LeftButton, {}, at(150));
        EXPECT_EQ(actions, 0) << maximum;
    }
}

TEST_F(SliderTest, AScreenReaderGetsNameAndValueAndSetsTheValue) {
    slider.setAccessibleName("Position");
    slider.setValueText([](double value) { return QString("%1 seconds").arg(value); });
    QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(&slider);
    ASSERT_NE(spoken, nullptr);
    EXPECT_EQ(spoken->role(), QAccessible::Slider);
    EXPECT_EQ(spoken->text(QAccessible::Name), "Position");
    EXPECT_EQ(spoken->text(QAccessible::Value), "100 seconds");
    ASSERT_NE(spoken->valueInterface(), nullptr);
    spoken->valueInterface()->setCurrentValue(42.0);
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 42);
    EXPECT_EQ(actions, 1);
}

TEST_F(SliderTest, FocusIsVisible) {
    const QImage without = support::picture(slider);
    slider.activateWindow();
    slider.setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(support::runUntil([&] { return slider.hasFocus(); }));
    EXPECT_NE(support::picture(slider), without);
}

} // namespace
