#include "platform/cocoa/ThreePartImage.h"
#include "tests/support/TestApplication.h"

#include <gtest/gtest.h>

namespace {

using cocoa::drawThreePartImage;
using cocoa::Image;

Image plain(int width, int height, QColor color, double scale = 1) {
    QImage picture((QSizeF(width, height) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(scale);
    picture.fill(color);
    return Image(picture);
}

/// The colours of the middle line of what is drawn onto a picture of 40 x 10 points at `scale`.
template <typename Draw> std::string middleLine(double scale, Draw draw) {
    support::offscreenApplication();
    QImage canvas((QSizeF(40, 10) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    canvas.setDevicePixelRatio(scale);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter);
    painter.end();
    return support::colours(canvas, canvas.height() / 2);
}

TEST(ThreePartImage, KeepsCapsAndStretchesTheCentreWithoutSeams) {
    const Image left = plain(4, 6, Qt::red);
    const Image centre = plain(1, 6, Qt::green);
    const Image right = plain(3, 6, Qt::blue);
    const Image none;
    const struct {
        double scale;
        QRectF frame;
        Image start;
        Image fill;
        Image end;
        const char* expected;
    } cases[] = {
        {1, {5, 2, 30, 6}, left, centre, right, "5. 4r 23g 3b 5. "},
        {2, {5, 2, 30, 6}, left, centre, right, "10. 8r 46g 6b 10. "},
        {1.5, {5, 2, 30, 6}, left, centre, right, "8. 6r 34g 5b 7. "},       // 7.5, 13.5, 48, 52.5 rounded
        {1.25, {5.3, 2, 21.7, 6}, left, centre, right, "7. 5r 18g 4b 16. "}, // 6.625, 11.625, 30, 33.75
        {1, {5, 2, 30, 6}, none, centre, right, "5. 27g 3b 5. "},
        {1, {5, 2, 30, 6}, left, centre, none, "5. 4r 26g 5. "},
        {1, {5, 2, 30, 6}, left, none, right, "5. 4r 23. 3b 5. "},
        {1, {5, 2, 30, 6}, none, none, none, "40. "},
        {1, {5, 2, 7, 6}, left, centre, right, "5. 4r 3b 28. "},
        {1, {10, 2, 6, 6}, plain(8, 6, Qt::red), centre, plain(4, 6, Qt::blue), "10. 4r 2b 24. "}, // cut
        {1, {5, 2, 0, 6}, left, centre, right, "40. "},
        {1, {5, 2, -4, 6}, left, centre, right, "40. "},
    };
    for (const auto& each : cases) {
        const std::string line = middleLine(each.scale, [&](QPainter& painter) {
            drawThreePartImage(painter, each.frame, each.start, each.fill, each.end);
        });
        EXPECT_EQ(line, each.expected) << each.scale << " width " << each.frame.width();
    }
}

TEST(Image, IsDrawnAtItsOwnSizeOnWholePixelsWherever) {
    const Image picture = plain(10, 6, Qt::red, 2);
    EXPECT_EQ(picture.size(), QSizeF(10, 6));
    const struct {
        double scale;
        double x;
        const char* expected;
    } cases[] = {{1, 5, "5. 10r 25. "},   {1, 5.4, "5. 10r 25. "},   {1, 5.6, "6. 10r 24. "},
                 {1.5, 5, "8. 15r 37. "}, {1.5, 6.1, "9. 15r 36. "}, {2, 5.25, "11. 20r 49. "}};
    for (const auto& each : cases) {
        const std::string line = middleLine(each.scale, [&](QPainter& painter) {
            picture.drawAtPoint(painter, {each.x, 2});
        });
        EXPECT_EQ(line, each.expected) << each.scale << ' ' << each.x;
    }
}

} // namespace
