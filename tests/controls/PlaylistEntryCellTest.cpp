#include "controls/PlaylistEntryCell.h"

#include "tests/support/TestApplication.h"

#include <QPainter>
#include <gtest/gtest.h>

namespace {

const QColor grey(34, 34, 34);
const QColor blue(74, 144, 226);
const QColor yellow(248, 231, 28);
const QColor red(226, 121, 90);
const QColor faint(92, 107, 125);

class PlaylistEntryCellTest : public testing::Test {
protected:
    PlaylistEntryCellTest() {
        support::offscreenApplication();
        cell.setBackgroundColor(grey);
        cell.setTrackNumber(2);
        cell.setInfo1("Café Été");
        cell.setInfo2("Lumière - Saisons");
        cell.setLengthInfo("03:07");
        QImage icon(6, 8, QImage::Format_ARGB32_Premultiplied);
        icon.fill(Qt::red);
        cell.setPlayIcon(cocoa::Image(icon));
    }

    QImage draw(const QRectF& frame = {0, 0, 380, 54}) {
        QImage canvas(400, 60, QImage::Format_ARGB32_Premultiplied);
        canvas.fill(Qt::transparent);
        QPainter painter(&canvas);
        cell.drawInteriorWithFrame(painter, frame);
        return canvas;
    }

    /// How many pixels of a rectangle are nearer to `colour` than to the ground.
    static int pixels(const QImage& image, const QRectF& where, const QColor& colour) {
        const auto distance = [](const QColor& a, const QColor& b) {
            return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) +
                   std::abs(a.blue() - b.blue());
        };
        int count = 0;
        const QRect area = where.toAlignedRect() & image.rect();
        for (int y = area.top(); y <= area.bottom(); ++y)
            for (int x = area.left(); x <= area.right(); ++x)
                count += distance(image.pixelColor(x, y), colour) < 60;
        return count;
    }

    PlaylistEntryCell cell;
};

TEST_F(PlaylistEntryCellTest, TheActiveRowIsYellowWithItsIconAndTheOthersBlueWithout) {
    const QRectF frame(0, 0, 380, 54);
    const QRectF texts[] = {cell.trackNumberRectForBounds(frame), cell.info1RectForBounds(frame),
                            cell.info2RectForBounds(frame), cell.lengthInfoRectForBounds(frame)};
    for (const bool active : {false, true}) {
        SCOPED_TRACE(active);
        cell.setActive(active);
        const QImage row = draw(frame);
        for (const QRectF& text : texts) {
            EXPECT_GT(pixels(row, text, active ? yellow : blue), 5);
            EXPECT_EQ(pixels(row, text, active ? blue : yellow), 0);
        }
        EXPECT_EQ(row.pixelColor(330, 17), active ? QColor(Qt::red) : grey);
        EXPECT_EQ(row.pixelColor(326, 17), grey);
        EXPECT_EQ(row.pixelColor(2, 53), grey);
        EXPECT_EQ(row.pixelColor(2, 54), blue);
        EXPECT_EQ(row.pixelColor(384, 54), blue);
        EXPECT_EQ(row.pixelColor(386, 54).alpha(), 0);
    }
    cell.setPlayIcon({});
    EXPECT_EQ(draw(frame).pixelColor(330, 17), grey);
}

TEST_F(PlaylistEntryCellTest, AFailedRowShowsItsMarkInsteadOfTheIconAndARedReason) {
    const QRectF frame(0, 0, 380, 54);
    cell.setInfo2("No answer from radio.example");
    for (const bool active : {false, true}) {
        SCOPED_TRACE(active);
        cell.setActive(active);
        cell.setFailed(false);
        EXPECT_EQ(pixels(draw(frame), frame, red), 0) << "this colour is for nothing else";
        cell.setFailed(true);
        const QImage row = draw(frame);
        EXPECT_GT(pixels(row, cell.failureMarkRectForBounds(frame), red), 10);
        EXPECT_GT(pixels(row, cell.info2RectForBounds(frame), red), 20);
        EXPECT_GT(pixels(row, cell.info1RectForBounds(frame), active ? yellow : faint), 20);
        EXPECT_EQ(pixels(row, frame, Qt::red), 0) << "no play icon";
    }
}

TEST_F(PlaylistEntryCellTest, ALongTitleReachesTheRightEdgeOverTheIconAndNoFurther) {
    cell.setActive(true);
    cell.setLengthInfo(std::nullopt);
    cell.setInfo1(QString(200, QChar(0x2588))); // full blocks: no gaps between the letters
    const QImage row = draw({0, 0, 300, 54});
    EXPECT_GT(pixels(row, {247, 13, 6, 8}, yellow), 20);
    EXPECT_EQ(pixels(row, {300, 0, 90, 54}, yellow), 0);
}

} // namespace
