#include "app/search/SearchField.h"

#include "controls/Colours.h"
#include "platform/cocoa/Scale.h"

#include <QEvent>
#include <QPainter>

namespace app {
namespace {

constexpr int margin = 16;
constexpr int textLeft = 40;
constexpr int resultWidth = 110;
constexpr int maxLength = 200;

} // namespace

SearchField::SearchField(QWidget* parent) : QWidget(parent), m_line(this), m_result(this) {
    m_line.setFrame(false);
    m_line.setMaxLength(maxLength);
    m_line.setPlaceholderText(tr("Title, artist, album or file name"));
    m_line.setAccessibleName(tr("Search the playlist"));
    m_line.setToolTip(tr("Escape ends the search"));
    m_line.setAcceptDrops(false); // files that fall there are the window's to take
    m_line.installEventFilter(this);
    m_result.setFontSize(10);
    m_result.setTextColour(QColor(0x9a, 0xa5, 0xb4));
    m_result.setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_result.setAccessibleName(tr("Found"));
    setFocusProxy(&m_line);
}

QRectF SearchField::box() const {
    return cocoa::designRect(*this).adjusted(margin, 5, -margin, -5);
}

void SearchField::paintEvent(QPaintEvent* /*event*/) {
    cocoa::DesignPainter painter(this);
    painter.fillRect(cocoa::designRect(*this), QColor(0x1b, 0x1e, 0x22));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(m_line.hasFocus() ? colours::blue() : QColor(0x3a, 0x42, 0x4d));
    painter.setBrush(QColor(0x13, 0x15, 0x18));
    painter.drawRoundedRect(box().adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    painter.setPen(QPen(QColor(0x9a, 0xa5, 0xb4), 1.4));
    const QPointF lens = box().topLeft() + QPointF(12, 11);
    painter.drawEllipse(lens, 4, 4);
    painter.drawLine(lens + QPointF(3, 3), lens + QPointF(7, 7));
}

void SearchField::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const QRectF inside = box().adjusted(1, 1, -1, -1);
    const double resultLeft = inside.right() - 8 - resultWidth;
    m_line.setGeometry(
        cocoa::scaledToInt(QRectF(QPointF(textLeft, inside.top()), QPointF(resultLeft, inside.bottom()))));
    m_result.setGeometry(cocoa::scaledToInt(QRectF(resultLeft, inside.top(), resultWidth, inside.height())));
}

bool SearchField::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
    return QWidget::eventFilter(watched, event);
}

} // namespace app
