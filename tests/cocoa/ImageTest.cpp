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

/// Draws onto a picture of 40 x 10 points at `scale` and tells the colours of its middle line, one letter a
/// pixel: r, g, b, or . for nothing; ? for anything else.
template <typename Draw> std::string middleLine(double scale, Draw draw) {
    support::offscreenApplication();
    QImage canvas((QSizeF(40, 10) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    canvas.setDevicePixelRatio(scale);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter);
    painter.end();
    std::string line;
    for (int x = 0; x < canvas.width(); ++x) {
        const QColor color = canvas.pixelColor(x, canvas.height() / 2);
        line += color == QColor(Qt::red)     ? 'r'
                : color == QColor(Qt::green) ? 'g'
                : color == QColor(Qt::blue)  ? 'b'
                : color.alpha() == 0         ? '.'
                                             : '?';
    }
    return line;
}

std::string runs(const std::string& line) {
    std::string told;
    for (std::size_t at = 0; at < line.size();) {
        const std::size_t end = std::min(line.find_first_not_of(line[at], at), line.size());
        told += std::to_string(end - at) + line[at] + ' ';
        at = end;
    }
    return told;
}

TEST(ThreePartImage, KeepsCapsAndStretchesTheCentreWithoutSeams) {
    const Image left = plain(4, 6, Qt::red);
    const Image centre = plain(1, 6, Qt::green);
    const Image right = plain(3, 6, Qt::blue);
    const Image none;
    const struct {
        double scale;
        QRectF frame;
        const Image& start;
        const Image& fill;
        const Image& end;
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
        {1, {5, 2, 0, 6}, left, centre, right, "40. "},
        {1, {5, 2, -4, 6}, left, centre, right, "40. "},
    };
    for (const auto& each : cases) {
        const std::string line = middleLine(each.scale, [&](QPainter& painter) {
            drawThreePartImage(painter, each.frame, each.start, each.fill, each.end);
        });
        EXPECT_EQ(runs(line), each.expected) << each.scale << " width " << each.frame.width();
    }
}

TEST(ThreePartImage, CapsThatHaveNoRoomAreCutAndStayInside) {
    const std::string line = middleLine(1, [](QPainter& painter) {
        drawThreePartImage(painter, {10, 2, 6, 6}, plain(8, 6, Qt::red), plain(1, 6, Qt::green),
                           plain(4, 6, Qt::blue));
    });
    EXPECT_EQ(runs(line), "10. 4r 2b 24. ");
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
        EXPECT_EQ(runs(line), each.expected) << each.scale << ' ' << each.x;
    }
}

TEST(Image, WhatIsMissingDrawsNothing) {
    EXPECT_TRUE(Image::named(QStringLiteral("no such picture.png")).isNull());
    EXPECT_TRUE(Image(QImage()).isNull());
    EXPECT_EQ(Image().size(), QSizeF(0, 0));
    EXPECT_EQ(middleLine(1,
                         [](QPainter& painter) {
                             Image().drawInRect(painter, {0, 0, 40, 10});
                         }),
              std::string(40, '.'));
}

} // namespace
