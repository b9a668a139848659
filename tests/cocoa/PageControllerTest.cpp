#include "platform/cocoa/PageController.h"
#include "platform/cocoa/ViewController.h"
#include "tests/support/TestApplication.h"

#include <QLineEdit>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

namespace {

class Page : public cocoa::ViewController {
public:
    int loads = 0;

protected:
    void loadView(QWidget& /*view*/) override { ++loads; }
};

class Book : public cocoa::PageControllerDelegate {
public:
    QString identifierForObject(const QString& object) override { return object; }
    cocoa::ViewController* viewControllerForIdentifier(const QString& identifier) override {
        const auto at = names.indexOf(identifier);
        return at < 0 || at > 2 ? nullptr : &pages[at];
    }
    void pageControllerDidEndLiveTransition() override {
        ++ended;
        controller->completeTransition();
    }

    QStringList names{"one", "two", "three", "none"};
    Page pages[3];
    int ended = 0;
    cocoa::PageController* controller = nullptr;
};

class PageControllerTest : public testing::Test {
protected:
    PageControllerTest() {
        book.controller = &controller;
        controller.resize(300, 200);
        controller.setDelegate(&book);
        controller.setArrangedObjects(book.names);
        controller.show();
    }
    void swipe(int x, ulong timestamp) {
        QWheelEvent event({5, 5}, {5, 5}, {}, {x, 0}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        event.setTimestamp(timestamp);
        QApplication::sendEvent(&controller, &event);
    }
    bool shownAlone(int page) {
        return support::runUntil([&] {
            for (int each = 0; each < 3; ++each) {
                const bool shown = book.pages[each].isViewLoaded() && book.pages[each].view().isVisible();
                if (shown != (each == page)) return false;
            }
            return book.pages[page].view().geometry() == controller.rect();
        });
    }

    QApplication& application = support::offscreenApplication();
    Book book;
    cocoa::PageController controller;
};

TEST_F(PageControllerTest, LoadsAPageWhenItIsFirstTurnedTo) {
    EXPECT_EQ(book.pages[0].loads, 1);
    EXPECT_FALSE(book.pages[1].isViewLoaded());
    EXPECT_EQ(book.ended, 0) << "the first page comes without a transition";
    controller.turnForward();
    EXPECT_EQ(controller.selectedViewController(), &book.pages[1]);
    EXPECT_TRUE(book.pages[0].view().isVisible()) << "it slides out";
    ASSERT_TRUE(shownAlone(1));
    EXPECT_EQ(book.ended, 1);
    controller.turnBack();
    controller.turnToPage(1); // changed one's mind in mid-slide
    ASSERT_TRUE(shownAlone(1));
    EXPECT_EQ(book.pages[1].loads, 1);
    EXPECT_FALSE(book.pages[2].isViewLoaded());
}

TEST_F(PageControllerTest, StopsAtTheEndsAndIgnoresMissingPages) {
    controller.turnBack();
    EXPECT_EQ(controller.selectedIndex(), 0);
    controller.turnToPage(3); // has no controller
    controller.turnToPage(7);
    EXPECT_EQ(controller.selectedIndex(), 0);
    ASSERT_TRUE(shownAlone(0));
    EXPECT_EQ(book.ended, 0);
}

TEST_F(PageControllerTest, KeysAndSwipesTurnOnePageEach) {
    QTest::keyClick(&controller, Qt::Key_Right);
    EXPECT_EQ(controller.selectedIndex(), 1);
    QTest::keyClick(&controller, Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(controller.selectedIndex(), 0);
    for (ulong at = 1000; at < 1200; at += 10)
        swipe(-40, at); // one long stroke
    EXPECT_EQ(controller.selectedIndex(), 1);
    swipe(-120, 2000);
    EXPECT_EQ(controller.selectedIndex(), 2);
    swipe(60, 3000);
    EXPECT_EQ(controller.selectedIndex(), 2) << "too short";
    ASSERT_TRUE(shownAlone(2));
    controller.resize(320, 240);
    EXPECT_TRUE(shownAlone(2));
}

TEST_F(PageControllerTest, FocusMovesToTheNewPageOnlyFromTheOldOne) {
    QWidget window;
    QLineEdit beside(&window);
    controller.setParent(&window);
    window.show();
    controller.show();
    book.pages[0].view().setFocus();
    controller.turnToPage(1);
    EXPECT_EQ(window.focusWidget(), &book.pages[1].view());
    beside.setFocus();
    controller.turnToPage(0);
    EXPECT_EQ(window.focusWidget(), &beside);
    controller.setParent(nullptr);
}

TEST_F(PageControllerTest, ViewsAreDestroyedOnceInAnyOrder) {
    auto page = std::make_unique<Page>();
    auto host = std::make_unique<QWidget>();
    page->view().setParent(host.get());
    const QPointer<QWidget> view = &page->view();
    host.reset();
    EXPECT_TRUE(view.isNull());
    page.reset();
}

} // namespace
