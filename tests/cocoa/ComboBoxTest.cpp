#include "platform/cocoa/ComboBox.h"
#include "tests/support/TestApplication.h"

#include <QAbstractItemView>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace {

class Names : public cocoa::ComboBoxDataSource {
public:
    int numberOfItemsInComboBox() override { return int(names.size()); }
    std::optional<QString> objectValueForItemAtIndex(int index) override { return names.at(index); }
    std::int64_t indexOfItemWithStringValue(const QString& string) override {
        const auto index = names.indexOf(string);
        return index < 0 ? cocoa::NotFound : index;
    }
    QStringList names{"Road", "Work", "Road"};
};

class ComboBoxTest : public testing::Test {
protected:
    ComboBoxTest() {
        box.setDataSource(&names);
        box.setStringValue("Mine");
        box.setAction(
            [this] { acted += QString("%1:%2 ").arg(box.indexOfSelectedItem()).arg(box.stringValue()); });
        window.resize(300, 100);
        other.move(0, 50);
        window.show();
        window.activateWindow();
        box.setFocus();
        EXPECT_TRUE(support::runUntil([&] { return box.lineEdit()->hasFocus(); }));
    }
    void type(const char* text) {
        box.lineEdit()->selectAll();
        QTest::keyClicks(QApplication::focusWidget(), QString::fromUtf8(text));
    }
    void key(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    void choose(int downs) {
        key(Qt::Key_Down);
        ASSERT_TRUE(support::runUntil([&] { return box.view()->isVisible(); }));
        for (int each = 0; each < downs; ++each)
            QTest::keyClick(box.view(), Qt::Key_Down);
        QTest::keyClick(box.view(), Qt::Key_Return);
        ASSERT_TRUE(support::runUntil([&] { return !box.view()->isVisible(); }));
    }

    QApplication& application = support::offscreenApplication();
    Names names;
    QWidget window;
    cocoa::ComboBox box{&window};
    QLineEdit other{&window};
    QString acted;
};

TEST_F(ComboBoxTest, TypedTextSelectsOnlyAnItemOfThatName) {
    type("Party");
    key(Qt::Key_Return);
    type("Work");
    key(Qt::Key_Return);
    type("work"); // looks alike, is another name
    key(Qt::Key_Return);
    type("Road");
    box.validateEditing();
    key(Qt::Key_Return); // not typed over another name
    EXPECT_EQ(acted, "-1:Party 1:Work -1:work -1:Road -1:Road ");
}

TEST_F(ComboBoxTest, EscapeRevertsAndLeavingCommitsTypedText) {
    type("Nonsense");
    box.setStringValue("Mine"); // said again by a list that was read again
    EXPECT_EQ(box.stringValue(), "Nonsense");
    key(Qt::Key_Escape);
    EXPECT_EQ(box.stringValue(), "Mine");
    other.setFocus(Qt::MouseFocusReason);
    EXPECT_TRUE(other.hasFocus());
    EXPECT_EQ(acted, QString());
    box.setFocus();
    type("Work"); // an item's name, which only Enter chooses
    other.setFocus(Qt::MouseFocusReason);
    EXPECT_EQ(acted, "-1:Work ");
}

TEST_F(ComboBoxTest, ChoosingDistinguishesItemsOfTheSameName) {
    names.names << "Fresh"; // came after the box last looked
    choose(3);
    EXPECT_EQ(acted, "3:Fresh ");
    acted.clear();
    box.setStringValue("Work");
    choose(1); // the list opens at the text's own item
    EXPECT_EQ(acted, "2:Road ");
    EXPECT_EQ(box.stringValue(), "Road");
    type("Half");
    choose(2); // back to the text that was there
    EXPECT_EQ(box.stringValue(), "Road");
}

TEST_F(ComboBoxTest, OpeningAndLeavingTheListChangesNothing) {
    type("Half");
    key(Qt::Key_Down);
    ASSERT_TRUE(support::runUntil([&] { return box.view()->isVisible(); }));
    EXPECT_EQ(box.stringValue(), "Half");
    QTest::keyClick(box.view(), Qt::Key_Escape);
    ASSERT_TRUE(support::runUntil([&] { return !box.view()->isVisible(); }));
    EXPECT_EQ(box.stringValue(), "Half");
    EXPECT_EQ(acted, QString());
    key(Qt::Key_Escape);
    names.names.clear();
    key(Qt::Key_Down); // nothing to choose from
    EXPECT_FALSE(box.view()->isVisible());
    EXPECT_EQ(box.stringValue(), "Mine");
}

} // namespace
