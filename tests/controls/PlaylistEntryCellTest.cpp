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

TEST_F(PlaylistEntryCellTest, ALongTitleTouchesNeitherNumberNorMarkNorLength) {
    const QRectF frame(0, 0, 300, 54);
    cell.setInfo1(QString(200, QChar(0x2588))); // full blocks: no gaps between the letters
    cell.setInfo2(QString(200, QChar(0x2588)));
    const struct {
        std::int64_t number;
        bool active;
        bool failed;
        const char* length;
        double end; ///< Of the title.
    } cases[] = {{7, false, false, "", 300},        {999, false, false, "03:07", 254},
                 {1000, true, false, "03:07", 241}, {1000, false, true, "", 240},
                 {100000, true, true, "", 240},     {123456789, false, false, "100:00", 254}};
    for (const auto& [number, active, failed, length, end] : cases) {
        SCOPED_TRACE(number);
        cell.setTrackNumber(number);
        cell.setActive(active);
        cell.setFailed(failed);
        cell.setLengthInfo(QString(length));
        const QRectF title = cell.info1RectForBounds(frame);
        const double numberEnd = cell.trackNumberRectForBounds(frame).right();
        EXPECT_EQ(title.left() == 34, number < 1000);
        EXPECT_GT(title.left(), numberEnd);
        EXPECT_EQ(title.right(), end);
        EXPECT_EQ(cell.info2RectForBounds(frame).left(), title.left());
        const QImage row = draw(frame);
        const QRectF gaps[] = {{numberEnd + 0.5, 10, title.left() - numberEnd - 2, 12}, {end + 1, 10, 4, 14}};
        for (const QRectF& gap : gaps)
            EXPECT_EQ(pixels(row, gap, cell.getTextColour()), 0) << gap.left();
    }
}

TEST_F(PlaylistEntryCellTest, TheToolTipHoldsWhatIsCutAndWhyTheRowFails) {
    const QRectF frame(0, 0, 300, 54);
    const QString endless(200, u'm');
    EXPECT_EQ(cell.toolTip(frame), "");
    cell.setInfo1(endless);
    EXPECT_EQ(cell.toolTip(frame), endless);
    cell.setInfo2("<b>" + endless);
    EXPECT_EQ(cell.toolTip(frame), endless + "\n<b>" + endless);
    cell.setInfo1(std::nullopt);
    cell.setInfo2("File not found");
    cell.setFailed(true);
    EXPECT_EQ(cell.toolTip(frame), "File not found");
}

TEST_F(PlaylistEntryCellTest, MatchesAreHighlighted) {
    const QRectF frame(0, 0, 380, 54);
    const QImage plain = draw(frame);
    cell.setInfo2Marks({{0, 7}, {10, 99}}); // more than there is
    const QImage row = draw(frame);
    const QRectF text = cell.info2RectForBounds(frame);
    const auto ground = [&](double x) {
        return row.pixelColor(static_cast<int>(x), static_cast<int>(text.top()) + 1);
    };
    EXPECT_NE(ground(text.left() + 4), grey);
    EXPECT_NE(ground(text.right() - 4), grey);
    EXPECT_EQ(ground(text.right() + 4), grey);
    EXPECT_EQ(plain.copy(0, 0, 380, 28), row.copy(0, 0, 380, 28)) << "the title";
}

} // namespace
