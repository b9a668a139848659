#include "controls/PlaylistEntryCell.h"

#include "tests/support/TestApplication.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGlyphRun>
#include <QPainter>
#include <QRawFont>
#include <QTextLayout>
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

TEST_F(PlaylistEntryCellTest, ElementsStandAtTheirOffsetsAndTextsEndAtTheFramesRightEdge) {
    const QString longText(200, QLatin1Char('m'));
    cell.setInfo1(longText);
    cell.setInfo2(longText);
    cell.setLengthInfo(longText);
    // As it should be, elsewhere, and narrower than the texts' offset.
    for (const QRectF frame : {QRectF(0, 0, 300, 53), QRectF(7, 110, 200, 54), QRectF(0, 0, 30, 54)}) {
        SCOPED_TRACE(frame.width());
        const QPointF left = frame.topLeft();
        const QPointF right = frame.topRight();
        EXPECT_EQ(cell.trackNumberRectForBounds(frame).topLeft(), left + QPointF(14, 13));
        const QSizeF info1(std::max(0.0, frame.width() - 34), cell.attributedInfo1Value()->size().height());
        EXPECT_EQ(cell.info1RectForBounds(frame), QRectF(left + QPointF(34, 10), info1));
        EXPECT_EQ(cell.info2RectForBounds(frame).topLeft(), left + QPointF(34, 30));
        EXPECT_EQ(cell.info2RectForBounds(frame).width(), info1.width());
        EXPECT_EQ(cell.lengthInfoRectForBounds(frame).topLeft(), right + QPointF(-40, 10));
        EXPECT_EQ(cell.lengthInfoRectForBounds(frame).width(), 40);
        EXPECT_EQ(cell.playIconRectForBounds(frame), QRectF(right + QPointF(-53, 13), QSizeF(6, 8)));
        EXPECT_EQ(cell.lineRectForBounds(frame), QRectF(0, frame.bottom(), frame.width() + 5, 1));
    }
    cell.setInfo1("short");
    const double own = cell.attributedInfo1Value()->size().width();
    EXPECT_EQ(cell.info1RectForBounds({0, 0, 300, 53}).width(), own);
    cell.setInfo1(std::nullopt);
    EXPECT_EQ(cell.info1RectForBounds({0, 0, 300, 53}).size(), QSizeF(0, 0));
}

TEST_F(PlaylistEntryCellTest, TrackNumbersHaveTwoDigitsAndZeroHasNone) {
    for (const auto& [number, text] :
         {std::pair<std::int64_t, const char*>{7, "07"}, {42, "42"}, {100, "100"}, {-3, "-3"}}) {
        cell.setTrackNumber(number);
        EXPECT_EQ(cell.attributedTrackNumberValue()->text, QLatin1String(text));
    }
    cell.setTrackNumber(0);
    EXPECT_FALSE(cell.attributedTrackNumberValue().has_value());
}

TEST_F(PlaylistEntryCellTest, TextsUseRobotoWhereItIsInstalled) {
    if (QFontInfo(QFont("Roboto")).family() != QLatin1String("Roboto")) GTEST_SKIP() << "no Roboto here";
    const QFont title = cell.attributedInfo1Value()->font;
    EXPECT_EQ(QFontInfo(title).family(), QLatin1String("Roboto"));
    EXPECT_EQ(title.pixelSize(), 12);
    EXPECT_TRUE(QFontInfo(title).bold());
    EXPECT_EQ(cell.attributedInfo2Value()->font.pixelSize(), 10);
    EXPECT_FALSE(QFontInfo(cell.attributedLengthInfoValue()->font).bold());
}

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

TEST_F(PlaylistEntryCellTest, LettersThatRobotoLacksComeFromOtherFonts) {
    const std::pair<const char*, QFontDatabase::WritingSystem> cases[] = {
        {"Ночной поезд", QFontDatabase::Cyrillic},
        {"Tokyo 夜行列車", QFontDatabase::Japanese},
        {"قطار الليل", QFontDatabase::Arabic}};
    for (const auto& [title, needs] : cases) {
        if (QFontDatabase::families(needs).isEmpty()) continue; // no font here can
        cell.setInfo1(QString::fromUtf8(title));
        const AttributedString string = *cell.attributedInfo1Value();
        QTextLayout layout(string.text, string.font);
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        for (const QGlyphRun& run : layout.glyphRuns())
            EXPECT_FALSE(run.glyphIndexes().contains(0)) << run.rawFont().familyName().toStdString();
    }
}

} // namespace
