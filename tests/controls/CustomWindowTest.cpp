#include "controls/CustomWindow.h"

#include "tests/support/DisplayServer.h"
#include "tests/support/Media.h"
#include "tests/support/TestApplication.h"

#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <gtest/gtest.h>

namespace {

TEST(CustomWindowRules, TheWindowFollowsThePointerAndIsHeldAtTheTopOnly) {
    struct Case {
        const char* name;
        QRectF frame;
        QPointF location, initial, origin;
    };
    const QRectF visible(0, 0, 1440, 877);
    const Case cases[] = {
        {"follows with the grab offset", {100, 200, 380, 400}, {60, 80}, {50, 100}, {110, 180}},
        {"held at the top", {100, 400, 380, 400}, {50, 200}, {50, 100}, {100, 477}},
        {"exactly at the top", {100, 400, 380, 400}, {50, 177}, {50, 100}, {100, 477}},
        {"leaves at the left", {10, 200, 380, 400}, {0, 100}, {200, 100}, {-190, 200}},
        {"leaves at the bottom", {10, 20, 380, 400}, {50, 0}, {50, 300}, {10, -280}},
        {"leaves at the right", {1300, 20, 380, 400}, {350, 0}, {50, 0}, {1600, 20}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(CustomWindow::draggedOrigin(visible, c.frame, c.location, c.initial), c.origin) << c.name;
}

/// A real window with a real pointer. The display must be there before the application.
class DraggedWindow : public testing::Test {
protected:
    DraggedWindow() {
        reserveTop();
        button.setGeometry(120, 60, 60, 30);
        label.setGeometry(10, 60, 80, 30);
        window.show();
    }

    /// A desktop panel, so that the work area begins below the screen's top.
    void reserveTop() {
        panel.setAttribute(Qt::WA_X11NetWmWindowTypeDock);
        panel.setGeometry(0, 0, 800, panelHeight);
        panel.show();
        support::run({"xprop", "-id", std::to_string(panel.winId()), "-f", "_NET_WM_STRUT", "32c", "-set",
                      "_NET_WM_STRUT", "0, 0, " + std::to_string(panelHeight) + ", 0"});
        reserved =
            support::runUntil([&] { return panel.screen()->availableGeometry().top() == panelHeight; });
    }

    static void pointer(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "xdotool");
        support::run(arguments);
    }
    static void moveTo(int x, int y) { pointer({"mousemove", std::to_string(x), std::to_string(y)}); }

    /// Where the server shows the window.
    QPoint shownAt() const {
        QProcess tool;
        tool.start(QStringLiteral("xdotool"), {QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"),
                                               QString::number(window.winId())});
        tool.waitForFinished();
        const QString answer = QString::fromLocal8Bit(tool.readAllStandardOutput());
        static const QRegularExpression place(QStringLiteral("X=(-?\\d+)\\nY=(-?\\d+)"));
        const QRegularExpressionMatch match = place.match(answer);
        return {match.captured(1).toInt(), match.captured(2).toInt()};
    }

    [[nodiscard]] bool stands(int x, int y) const {
        return support::runUntil([&] { return window.pos() == QPoint(x, y) && shownAt() == QPoint(x, y); },
                                 std::chrono::seconds(10));
    }

    static char** arguments() {
        static char name[] = "test";
        static char* values[] = {name, nullptr};
        return values;
    }

    static constexpr int panelHeight = 24;
    bool reserved = false;
    support::DisplayServer display{"800x600"};
    int count = 1;
    QApplication application{count, arguments()};
    QWidget panel;
    std::unique_ptr<CustomWindow> owned = CustomWindow::initWithContentRect({200, 150, 200, 120});
    CustomWindow& window = *owned;
    QPushButton button{QStringLiteral("no handle"), &window};
    QLabel label{QStringLiteral("a handle"), &window};
};

TEST_F(DraggedWindow, FollowsStopsAtTheTopAndLeavesAtTheLeft) {
    ASSERT_TRUE(reserved);
    ASSERT_TRUE(stands(200, 150));
    ASSERT_TRUE(support::runUntil([&] { return window.isActiveWindow(); }));

    moveTo(240, 180);
    pointer({"mousedown", "1"});
    ASSERT_TRUE(support::runUntil([&] { return window.initialLocation() == QPointF(40, 90); }));
    moveTo(300, 220);
    EXPECT_TRUE(stands(260, 190));
    moveTo(301, 10); // its top edge would be above the screen
    EXPECT_TRUE(stands(261, panelHeight));
    moveTo(301, 60); // below the height of the grab the window comes along again
    EXPECT_TRUE(stands(261, 30));
    moveTo(2, 100);
    EXPECT_TRUE(stands(-38, 70));
    moveTo(60, 590);
    EXPECT_TRUE(stands(20, 560));
    moveTo(240, 180);
    EXPECT_TRUE(stands(200, 150));
    pointer({"mouseup", "1"});

    moveTo(250, 225); // a label hands the press on; a button keeps it
    pointer({"mousedown", "1"});
    moveTo(260, 225);
    EXPECT_TRUE(stands(210, 150));
    pointer({"mouseup", "1"});
    moveTo(350, 225);
    pointer({"mousedown", "1"});
    ASSERT_TRUE(support::runUntil([&] { return button.isDown(); }));
    moveTo(380, 260);
    ASSERT_TRUE(support::runUntil([&] { return !button.isDown(); })); // the move has arrived
    EXPECT_EQ(window.pos(), QPoint(210, 150));
    pointer({"mouseup", "1"});
}

} // namespace
