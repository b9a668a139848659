// Rows dragged in a real window by real input.
#include "tests/cocoa/TestRows.h"
#include "tests/support/Media.h"
#include "tests/support/TestApplication.h"
#include "tests/support/WaitFor.h"

#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

class TableDragTest : public testing::Test {
protected:
    TableDragTest() {
        rows.table = &table;
        table.setDelegate(&rows);
        table.setDataSource(&rows);
        table.registerForDraggedTypes({rows.type});
        table.setWindowFlag(Qt::FramelessWindowHint);
        table.setGeometry(100, 100, 300, 330); // six rows
        table.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&table));
    }
    /// Drags from one point of the table to another and lets go there once `until` holds. The input comes
    /// from another thread, since a drag runs an event loop of its own; the pointer trembles, since only
    /// movements are answered.
    void drag(QPoint from, QPoint to, const std::function<bool()>& until) {
        std::jthread hand([&] {
            move(from);
            support::run({"xdotool", "mousedown", "1"});
            EXPECT_TRUE(trembleAt(from + QPoint(0, 20), [this] { return rows.dragBegan.load(); }));
            EXPECT_TRUE(trembleAt(to, until));
            support::run({"xdotool", "mouseup", "1"});
            over = true;
        });
        EXPECT_TRUE(
            support::runUntil([&] { return over && !rows.dropped.empty(); }, std::chrono::seconds(60)));
    }
    static bool trembleAt(QPoint point, const std::function<bool()>& condition) {
        int step = 0;
        return support::waitFor([&] {
            move(point + QPoint(++step % 2, 0));
            return condition();
        });
    }
    static void move(QPoint point) {
        support::run(
            {"xdotool", "mousemove", std::to_string(100 + point.x()), std::to_string(100 + point.y())});
    }

    QApplication& application = support::onScreenApplication();
    TestRows rows{1000};
    cocoa::TableView table;
    std::atomic<bool> over = false;
};

TEST_F(TableDragTest, ADragHeldAtTheEdgeScrolls) {
    drag({50, 80}, {60, 325}, [this] { return rows.proposed > 20; });
    ASSERT_EQ(rows.dropped.size(), 1U);
    EXPECT_EQ(rows.dropped[0].string, "1");
    EXPECT_GT(rows.dropped[0].row, 20);
    EXPECT_EQ(rows.dropped[0].operation, cocoa::DropOperation::on);
}

} // namespace
