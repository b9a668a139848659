#include "platform/cocoa/Alert.h"
#include "platform/cocoa/Timer.h"
#include "tests/support/TestApplication.h"

#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;

class RunLoopTest : public testing::Test {
protected:
    /// Runs the loop until a plain timer, which knows no modes, has fired 20 times beside ours.
    void letTimePass() {
        int passed = 0;
        QTimer clock;
        QObject::connect(&clock, &QTimer::timeout, [&] { ++passed; });
        clock.start(10);
        ASSERT_TRUE(support::runUntil([&] { return passed >= 20; }));
    }

    QApplication& application = support::offscreenApplication();
    int ticks = 0;
    cocoa::Timer timer{milliseconds(10), [this] { ++ticks; }};
};

TEST_F(RunLoopTest, TimersPauseWhileAnAlertIsOpen) {
    cocoa::Alert alert({"Stream address", "OK", "Cancel", "It should start with http/https."});
    auto field = std::make_unique<QLineEdit>();
    const QPointer<QLineEdit> typed = field.get();
    alert.setAccessoryView(std::move(field));
    int during = -1;
    QTimer::singleShot(0, &alert, [&] {
        const int before = ticks;
        letTimePass();
        during = ticks - before;
        QTest::keyClicks(QApplication::focusWidget(), "http://a");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    });
    EXPECT_EQ(alert.runModal(), cocoa::Alert::defaultReturn);
    EXPECT_EQ(typed->text(), "http://a");
    EXPECT_EQ(during, 0);
    const int after = ticks;
    EXPECT_TRUE(support::runUntil([&] { return ticks > after; }));

    QTimer::singleShot(0, &alert, [&] { QTest::keyClick(&alert, Qt::Key_Escape); });
    EXPECT_EQ(alert.runModal(), cocoa::Alert::alternateReturn);
}

TEST_F(RunLoopTest, TimersPauseWhileAMenuIsOpen) {
    QMenu menu;
    menu.addAction("Open");
    menu.popup({0, 0});
    const int before = ticks;
    letTimePass();
    EXPECT_EQ(ticks, before);
    menu.close();
    EXPECT_TRUE(support::runUntil([&] { return ticks > before; }));
}

} // namespace
