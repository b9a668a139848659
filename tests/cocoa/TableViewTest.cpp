#include "tests/cocoa/TestRows.h"
#include "tests/support/TestApplication.h"

#include <QAccessible>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using cocoa::IndexSet;
using cocoa::TableView;

class TableViewTest : public testing::Test {
protected:
    TableViewTest() {
        rows.table = &table;
        table.setDelegate(&rows);
        table.setDataSource(&rows);
        table.setDoubleAction([this] { doubleClicked.push_back(table.clickedRow()); });
        table.resize(300, 200);
        table.show();
        table.activateWindow();
    }
    QPoint inRow(int row) const { return table.rectOfRow(row).center().toPoint(); }
    void click(int row, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseClick(table.viewport(), Qt::LeftButton, modifiers, inRow(row));
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(&table, key, modifiers); }

    QApplication& application = support::offscreenApplication();
    TestRows rows{100};
    TableView table;
    std::vector<int> doubleClicked;
};

TEST_F(TableViewTest, RequestsOnlyRowsThatAreDrawn) {
    rows.displayed.clear();
    support::picture(table);
    EXPECT_EQ(rows.displayed, (std::vector<int>{0, 1, 2, 3}));
    table.verticalScrollBar()->setValue(55 * 50 + 10);
    rows.displayed.clear();
    support::picture(table);
    EXPECT_EQ(std::ranges::min(rows.displayed), 49) << "one above, whose separator may reach in";
    EXPECT_EQ(std::ranges::max(rows.displayed), 53);
}

TEST_F(TableViewTest, RemovedRowsAreNotRequestedBeforeAReload) {
    table.verticalScrollBar()->setValue(table.verticalScrollBar()->maximum());
    click(99);
    rows.numbers.resize(2);
    support::picture(table); // TestRows throws for a row outside
    EXPECT_EQ(table.numberOfRows(), 2);
    EXPECT_EQ(table.selectedRowIndexes(), IndexSet{});
    rows.numbers.clear();
    support::picture(table);
    key(Qt::Key_Return);
    key(Qt::Key_Down);
    EXPECT_TRUE(doubleClicked.empty());
}

TEST_F(TableViewTest, ClicksSelectExtendAndToggle) {
    click(1);
    click(3, Qt::ShiftModifier);
    EXPECT_EQ(table.selectedRowIndexes(), (IndexSet{1, 2, 3}));
    click(2, Qt::ControlModifier);
    EXPECT_EQ(table.selectedRowIndexes(), (IndexSet{1, 3}));
    click(3);
    EXPECT_EQ(table.selectedRowIndexes(), IndexSet{3}) << "the choice falls on release";
    key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(table.selectedRowIndexes().size(), 100U);
    table.setAllowsMultipleSelection(false);
    click(1, Qt::ShiftModifier);
    key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(table.selectedRowIndexes(), IndexSet{1});
}

TEST_F(TableViewTest, KeysMoveTheSelectionAndScrollToIt) {
    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        IndexSet selected;
    } cases[] = {{Qt::Key_Down, {}, {0}},    {Qt::Key_Down, Qt::ShiftModifier, {0, 1}},
                 {Qt::Key_End, {}, {99}},    {Qt::Key_Down, {}, {99}},
                 {Qt::Key_PageUp, {}, {97}}, {Qt::Key_Up, Qt::ShiftModifier, {96, 97}},
                 {Qt::Key_Home, {}, {0}},    {Qt::Key_Up, {}, {0}}};
    for (const auto& each : cases) {
        key(each.key, each.modifiers);
        EXPECT_EQ(table.selectedRowIndexes(), each.selected) << each.key;
        const QRectF row = table.rectOfRow(table.currentRow());
        EXPECT_TRUE(QRectF(table.viewport()->rect()).contains(row)) << each.key;
    }
}

TEST_F(TableViewTest, DoubleClickAndEnterReportTheRow) {
    QTest::mouseDClick(table.viewport(), Qt::LeftButton, {}, inRow(2));
    click(1);
    key(Qt::Key_Return);
    rows.numbers.resize(1);
    table.reloadData();
    QTest::mouseDClick(table.viewport(), Qt::LeftButton, {}, {50, 150});
    EXPECT_EQ(doubleClicked, (std::vector<int>{2, 1, -1}));
}

TEST_F(TableViewTest, ReloadKeepsWhatStillExists) {
    table.selectRowIndexes({-3, 1, 50, 99, 100});
    EXPECT_EQ(table.selectedRowIndexes(), (IndexSet{1, 50, 99}));
    rows.numbers.resize(60);
    table.reloadData();
    EXPECT_EQ(table.selectedRowIndexes(), (IndexSet{1, 50}));
    table.scrollRowToVisible(60);
    EXPECT_EQ(table.verticalScrollBar()->value(), 0) << "no such row";
    table.scrollRowToVisible(59);
    EXPECT_EQ(table.verticalScrollBar()->value(), 60 * 55 - table.viewport()->height());
}

TEST_F(TableViewTest, AHeightThatChangesWhileDrawingIsLaidOutAfterwards) {
    rows.height = 20;
    support::picture(table);
    EXPECT_EQ(table.rectOfRow(3).top(), 60);
    EXPECT_EQ(table.rowAtPoint({5, 61}), 3);
    EXPECT_EQ(table.rowAtPoint({5, 20 * 100}), -1);
}

TEST_F(TableViewTest, HiddenRowsKeepTheirIndexesAndAreNeitherDrawnNorReached) {
    rows.hides = [](int row) { return row % 10 != 3; };
    table.selectRowIndexes({3, 4});
    table.reloadData();
    EXPECT_EQ(table.selectedRowIndexes(), IndexSet{3});
    rows.displayed.clear();
    support::picture(table);
    EXPECT_EQ(rows.displayed, (std::vector<int>{3, 13, 23, 33}));
    EXPECT_EQ(table.rowAtPoint({5, 0}), 3);
    EXPECT_EQ(table.rowAtPoint({5, 549}), 93);
    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        IndexSet selected;
    } cases[] = {{Qt::Key_Down, {}, {13}},
                 {Qt::Key_Down, Qt::ShiftModifier, {13, 23}},
                 {Qt::Key_PageDown, {}, {43}},
                 {Qt::Key_End, {}, {93}},
                 {Qt::Key_Down, {}, {93}},
                 {Qt::Key_Home, {}, {3}},
                 {Qt::Key_Up, {}, {3}},
                 {Qt::Key_A, Qt::ControlModifier, {3, 13, 23, 33, 43, 53, 63, 73, 83, 93}}};
    for (const auto& each : cases) {
        key(each.key, each.modifiers);
        EXPECT_EQ(table.selectedRowIndexes(), each.selected) << each.key;
        EXPECT_FALSE(table.rectOfRow(table.currentRow()).isEmpty()) << each.key;
    }
    table.verticalScrollBar()->setValue(300);
    table.scrollRowToVisible(4);
    table.selectRowIndexes({4});
    EXPECT_EQ(table.verticalScrollBar()->value(), 300);
    EXPECT_EQ(table.selectedRowIndexes(), IndexSet{});
    rows.hides = [](int) { return true; };
    table.reloadData();
    for (const Qt::Key each : {Qt::Key_Down, Qt::Key_Home, Qt::Key_End, Qt::Key_PageUp, Qt::Key_Return})
        key(each);
    key(Qt::Key_A, Qt::ControlModifier);
    support::picture(table);
    EXPECT_EQ(table.selectedRowIndexes(), IndexSet{});
    EXPECT_TRUE(doubleClicked.empty());
}

TEST_F(TableViewTest, AScreenReaderGetsRowsAndSelection) {
    click(1);
    QAccessibleInterface* const list = QAccessible::queryAccessibleInterface(&table);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->role(), QAccessible::List);
    ASSERT_EQ(list->childCount(), 100);
    QAccessibleInterface* const row = list->child(1);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->text(QAccessible::Name), "1");
    EXPECT_TRUE(row->state().selected);
    row->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(doubleClicked, std::vector<int>{1});
    EXPECT_EQ(list->child(1), row);
    EXPECT_EQ(list->child(100), nullptr);
}

} // namespace
