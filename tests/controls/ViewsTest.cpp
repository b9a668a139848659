#include "controls/FenSpectrumAnalyzerView.h"
#include "controls/ImageBasedView.h"
#include "controls/InternalPlaylistComboBoxCell.h"
#include "platform/cocoa/Window.h"

#include "tests/support/TestApplication.h"

#include <QPainter>
#include <gtest/gtest.h>

namespace {

const QColor blue(74, 144, 226);

class ViewsTest : public testing::Test {
protected:
    ViewsTest() { support::offscreenApplication(); }
};

TEST_F(ViewsTest, SpectrumBarsStandOnTheBottomAsHighAsTheirValues) {
    FenSpectrumAnalyzerView view;
    view.resize(45, 30);
    const QImage nothing = support::picture(view, 2.0);
    EXPECT_EQ(nothing.pixelColor(2, 59).alpha(), 0);
    view.setSpectrumValues(FenSpectrumAnalyzerView::Values{});
    EXPECT_EQ(support::picture(view, 2.0), nothing);

    view.setSpectrumValues(FenSpectrumAnalyzerView::Values{10, 0, 25});
    const QImage bars = support::picture(view, 2.0);
    const auto at = [&](double x, double y) { return bars.pixelColor(int(x * 2), int(y * 2)); };
    EXPECT_EQ(at(1, 29.5), blue);
    EXPECT_EQ(at(3, 20), blue);
    EXPECT_EQ(at(1, 19.5).alpha(), 0);
    for (const double x : {4.5, 6.0, 8.0, 9.0, 11.0}) // the gaps, and the bar of height 0
        EXPECT_EQ(at(x, 29.5).alpha(), 0) << x;
    EXPECT_EQ(at(12, 5), blue);
    EXPECT_EQ(at(14.6, 29.5), blue);
    EXPECT_EQ(at(12, 4.5).alpha(), 0);
    EXPECT_EQ(at(16, 29.5).alpha(), 0);
    EXPECT_EQ(FenSpectrumAnalyzerView::barRect(2, 25, {0, 0, 45, 30}), QRectF(11.6, 5, 3.8, 25));
}

TEST_F(ViewsTest, AnImageStandsInTheLowerLeftCornerOnClearedGround) {
    QImage image(20, 10, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::red);
    ImageBasedView view;
    view.resize(40, 30);
    view.setViewImage(cocoa::Image(image));
    QImage canvas(40, 30, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::white);
    QPainter painter(&canvas);
    view.drawRect(painter);
    painter.end();
    EXPECT_EQ(canvas.pixelColor(0, 20), QColor(Qt::red));
    EXPECT_EQ(canvas.pixelColor(19, 29), QColor(Qt::red));
    EXPECT_EQ(canvas.pixelColor(0, 19).alpha(), 0);
    EXPECT_EQ(canvas.pixelColor(20, 29).alpha(), 0);
}

TEST_F(ViewsTest, TheShadowIsRenewedOnceAfterTheFirstDrawing) {
    cocoa::Window window;
    window.resize(60, 40);
    ImageBasedView view(&window);
    view.resize(60, 40);
    view.awakeFromNib();
    EXPECT_TRUE(view.repaint());
    window.show();
    ASSERT_TRUE(support::runUntil([&] { return !view.repaint(); }));
    EXPECT_TRUE(window.hasShadow());
    support::picture(view);
    EXPECT_FALSE(view.repaint());
}

TEST_F(ViewsTest, TheSelectorsArrowStandsOverTheRightEnd) {
    EXPECT_EQ(InternalPlaylistComboBoxCell::dropdownIconRect({10, 5, 200, 26}), QRectF(186, 7, 21, 21));
    InternalPlaylistComboBoxCell cell;
    QImage canvas(220, 40, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    cell.drawWithFrame(painter, {10, 5, 200, 26});
    painter.end();
    EXPECT_FALSE(cell.dropdownIcon().isNull());
    EXPECT_EQ(canvas.pixelColor(189, 10), QColor(0x29, 0x36, 0x44));
    EXPECT_EQ(canvas.pixelColor(196, 16), blue);
    EXPECT_EQ(canvas.pixelColor(185, 15).alpha(), 0);
    EXPECT_EQ(canvas.pixelColor(207, 15).alpha(), 0);
}

/// Art that the renderer can't read would leave holes in the window.
TEST_F(ViewsTest, EveryImageThatIsAskedForByNameIsThere) {
    for (const char* name :
         {"slider_knob.png", "slider_knob_yellow.png", "controls_background_with_separator",
          "controls_background", "btn_img_play", "playlist_play_icon", "internal_playlist_selector_arrow",
          "default_cover_art.png"}) {
        const cocoa::Image image = cocoa::Image::named(QString::fromLatin1(name));
        ASSERT_FALSE(image.isNull()) << name;
        const QImage pixels = image.pixmap(image.size().toSize()).toImage();
        EXPECT_GT(pixels.pixelColor(pixels.rect().center()).alpha(), 0) << name;
    }
}

} // namespace
