#include "app/EmptyListHint.h"

#include "controls/Colours.h"
#include "platform/cocoa/Scale.h"

#include <QPainter>

#include <algorithm>

namespace app {
namespace {

constexpr QSizeF boxSize{240, 150};
constexpr double boxTop = 96;
constexpr double leastTop = 8;

QFont textFont(int size, QFont::Weight weight) {
    QFont font(QStringLiteral("Roboto"));
    font.setPixelSize(size);
    font.setWeight(weight);
    return font;
}

void drawArrow(QPainter& painter, QPointF top) {
    painter.setPen(QPen(colours::blue(), 2, Qt::SolidLine, Qt::RoundCap));
    const QPointF point = top + QPointF(0, 36);
    painter.drawLine(top, point - QPointF(0, 2));
    painter.drawPolyline(QPolygonF{point + QPointF(-12, -12), point, point + QPointF(12, -12)});
}

} // namespace

EmptyListHint::EmptyListHint(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents); // the list handles drops
    setAccessibleName(tr("Drop music here, or add files with Ctrl+O, a folder with Ctrl+Shift+O, or a stream "
                         "with Ctrl+U"));
}

void EmptyListHint::paintEvent(QPaintEvent* /*event*/) {
    cocoa::DesignPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // Scale it down in a low window.
    const QSizeF room = cocoa::designRect(*this).size();
    const double fit = std::min(1.0, room.height() / (boxSize.height() + 2 * leastTop));
    painter.scale(fit, fit);
    const double top = std::min(boxTop, (room.height() / fit - boxSize.height()) / 2);
    const QRectF box(QPointF((room.width() / fit - boxSize.width()) / 2, top), boxSize);
    QColor frame = colours::blue();
    frame.setAlphaF(0.55F);
    QPen dashes(frame, 1.5);
    dashes.setDashPattern({5 / dashes.widthF(), 4 / dashes.widthF()});
    dashes.setCapStyle(Qt::FlatCap);
    painter.setPen(dashes);
    painter.drawRoundedRect(box, 10, 10);
    drawArrow(painter, {box.center().x(), box.top() + 30});

    const auto write = [&](const QString& text, double baseline) {
        painter.drawText(QRectF(box.left(), box.top() + baseline - 30, box.width(), 30),
                         Qt::AlignHCenter | Qt::AlignBottom, text);
    };
    painter.setPen(QColor(0xd7, 0xe3, 0xf2));
    painter.setFont(textFont(13, QFont::Bold));
    write(tr("Drop music here"), 93);
    painter.setPen(QColor(0x9a, 0xa5, 0xb4));
    painter.setFont(textFont(10, QFont::Normal));
    write(tr("or add files (Ctrl+O), a folder (Ctrl+Shift+O)"), 112);
    write(tr("or a stream (Ctrl+U)"), 128);
}

} // namespace app
