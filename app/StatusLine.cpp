#include "app/StatusLine.h"

#include "controls/Colours.h"
#include "platform/cocoa/Scale.h"

#include <QPainter>

#include <algorithm>

namespace app {
namespace {

constexpr int margin = 14;
constexpr double barLeft = 140;
constexpr int buttonWidth = 48;
constexpr double barHeight = 3;
constexpr double textSize = 10;

} // namespace

StatusLine::StatusLine(QWidget* parent) : QWidget(parent), m_text(this), m_stop(tr("Stop"), this) {
    m_text.setFontSize(textSize);
    m_text.setTextColour(QColor(0x9a, 0xa5, 0xb4));
    m_text.setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_text.setAccessibleName(tr("Status"));
    m_stop.setFlat(true);
    m_stop.setToolTip(tr("Leave the rest unread until it is seen or played"));
}

void StatusLine::showProgress(const QString& text, double fraction) {
    showLine(text, fraction);
}

void StatusLine::showText(const QString& text) {
    showLine(text, -1);
}

void StatusLine::showLine(const QString& text, double fraction) {
    m_text.setStringValue(text);
    m_stop.setVisible(fraction >= 0);
    if (fraction != m_fraction) update();
    m_fraction = fraction;
}

QRectF StatusLine::barRect() const {
    const QSizeF size = cocoa::designRect(*this).size();
    const QPointF textWidth(m_text.fontMetrics().horizontalAdvance(text()), 0);
    const double textRight = margin + cocoa::designPoint(textWidth).x();
    const double left = std::max(barLeft, textRight + margin);
    return {left, (size.height() - barHeight) / 2, size.width() - left - margin - buttonWidth, barHeight};
}

void StatusLine::paintEvent(QPaintEvent* /*event*/) {
    cocoa::DesignPainter painter(this);
    painter.fillRect(cocoa::designRect(*this), QColor(0x1b, 0x1e, 0x22));
    if (m_fraction < 0) return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QRectF bar = barRect();
    painter.setBrush(QColor(0x10, 0x12, 0x15));
    painter.drawRoundedRect(bar, barHeight / 2, barHeight / 2);
    bar.setWidth(bar.width() * m_fraction);
    painter.setBrush(colours::blue());
    painter.drawRoundedRect(bar, barHeight / 2, barHeight / 2);
}

void StatusLine::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const QRectF whole = cocoa::designRect(*this);
    m_text.setGeometry(cocoa::scaledToInt(whole.adjusted(margin, 0, -margin, 0)));
    m_stop.setGeometry(cocoa::scaledToInt(whole.adjusted(whole.width() - buttonWidth, 0, 0, 0)));
}

} // namespace app
