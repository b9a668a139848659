#include "controls/CustomWindow.h"
#include "controls/ResizeHandle.h"

#include "tests/support/Media.h"
#include "tests/support/TestApplication.h"

#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// A real window with a real pointer.
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
        panel.setGeometry(0, 0, 1280, panelHeight);
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

    /// Whether the server shows the window there.
    [[nodiscard]] bool isShownAt(int x, int y) const {
        const auto answer = support::scratch() / "geometry";
        support::Child tool({"xdotool", "getwindowgeometry", "--shell", std::to_string(window.winId())},
                            answer);
        const std::string place = "X=" + std::to_string(x) + "\nY=" + std::to_string(y) + "\n";
        return tool.succeeds() && support::readFile(answer).find(place) != std::string::npos;
    }

    [[nodiscard]] bool stands(int x, int y) const {
        return support::runUntil([&] { return window.pos() == QPoint(x, y) && isShownAt(x, y); },
                                 std::chrono::seconds(10));
    }

    static constexpr int panelHeight = 24;
    bool reserved = false;
    QApplication& application = support::onScreenApplication();
    QWidget panel;
    std::unique_ptr<CustomWindow> owned = CustomWindow::initWithContentRect({200, 150, 200, 120});
    CustomWindow& window = *owned;
    QPushButton button{"no handle", &window};
    QLabel label{"a handle", &window};
};

TEST_F(DraggedWindow, FollowsStopsAtTheTopAndLeavesAtTheOtherEdges) {
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
    moveTo(60, 790);
    EXPECT_TRUE(stands(20, 760));
    moveTo(1270, 300);
    EXPECT_TRUE(stands(1230, 270));
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

TEST_F(DraggedWindow, GrowsAtItsLowerEdgeAndCorners) {
    ASSERT_TRUE(reserved);
    ASSERT_TRUE(stands(200, 150));
    ResizeHandle handle(&window);
    window.setFixedWidth(200);
    window.setMinimumHeight(100);
    const auto layOut = [&] { handle.setGeometry(0, window.height() - 12, 200, 12); };
    handle.show();
    int height = 120;
    for (const auto& [x, above] : {std::pair{100, 2}, {3, 9}, {197, 9}}) {
        layOut();
        const int y = 150 + height - above;
        moveTo(200 + x, y);
        ASSERT_TRUE(support::runUntil([&] { return handle.underMouse(); }));
        pointer({"mousedown", "1"});
        int moved = 0; // a window manager takes it up at some time after the press
        EXPECT_TRUE(support::runUntil([&] {
            moved = std::min(moved + 5, 60);
            moveTo(200 + x + moved, y + moved + (moved == 60 ? 1 : 0));
            return window.height() > height + 20;
        }));
        pointer({"mouseup", "1"});
        EXPECT_EQ(window.width(), 200);
        EXPECT_TRUE(stands(200, 150));
        height = window.height();
    }
}

} // namespace
