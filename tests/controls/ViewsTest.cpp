#include "controls/FenSpectrumAnalyzerView.h"
#include "controls/ImageBasedView.h"

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
    for (const QPointF bar : {QPointF(1, 29.5), {3, 20}, {12, 5}, {14.6, 29.5}})
        EXPECT_EQ(at(bar.x(), bar.y()), blue) << bar.x();
    for (const QPointF gap : {QPointF(1, 19.5), {4.5, 29.5}, {8, 29.5}, {11, 29.5}, {12, 4.5}, {16, 29.5}})
        EXPECT_EQ(at(gap.x(), gap.y()).alpha(), 0) << gap.x();
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
    EXPECT_EQ(support::colours(canvas, 19), "40. ");
    EXPECT_EQ(support::colours(canvas, 20), "20r 20. ");
}

/// Art that the renderer can't read would leave holes in the window.
TEST_F(ViewsTest, EveryNamedImageExists) {
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
