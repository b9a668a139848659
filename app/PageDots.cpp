#include "app/PageDots.h"

#include "controls/Colours.h"
#include "platform/cocoa/Image.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace app {
namespace {

constexpr double pitch = 12.0;

cocoa::Image dotImage(bool current, bool hovered) {
    if (current) return cocoa::Image::named(QStringLiteral("page_dot_current"));
    return cocoa::Image::named(hovered ? QStringLiteral("page_dot_hover") : QStringLiteral("page_dot"));
}

} // namespace

PageDots::PageDots(QWidget* parent) : QWidget(parent) {
    setMouseTracking(true);
    setFocusPolicy(Qt::TabFocus);
}

void PageDots::setPages(const QStringList& names) {
    m_names = names;
    update();
}

void PageDots::setCurrentPage(int page) {
    m_current = page;
    setAccessibleDescription(m_names.value(page));
    update();
}

QRectF PageDots::dotRect(int page) const {
    const auto count = static_cast<double>(m_names.size());
    const double left = (width() - count * pitch) / 2.0;
    return {left + page * pitch, (height() - pitch) / 2.0, pitch, pitch};
}

int PageDots::pageAt(const QPointF& point) const {
    for (int page = 0; page < m_names.size(); ++page)
        if (dotRect(page).contains(point)) return page;
    return -1;
}

void PageDots::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    for (int page = 0; page < m_names.size(); ++page) {
        const cocoa::Image image = dotImage(page == m_current, page == m_hovered);
        QRectF place({}, image.size());
        place.moveCenter(dotRect(page).center());
        image.drawInRect(painter, place);
    }
    if (!hasFocus() || m_names.isEmpty()) return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colours::yellow(), 1.0));
    painter.drawRoundedRect(dotRect(0).united(dotRect(static_cast<int>(m_names.size()) - 1)), 5, 5);
}

void PageDots::mouseMoveEvent(QMouseEvent* event) {
    setHovered(pageAt(event->position()));
}

void PageDots::leaveEvent(QEvent*) {
    setHovered(-1);
}

void PageDots::setHovered(int page) {
    if (page == m_hovered) return;
    m_hovered = page;
    setToolTip(m_names.value(page));
    update();
}

void PageDots::mousePressEvent(QMouseEvent* event) {
    const int page = pageAt(event->position());
    if (page < 0 || event->button() != Qt::LeftButton) return event->ignore();
    choose(page);
}

void PageDots::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Left) return choose(m_current - 1);
    if (event->key() == Qt::Key_Right) return choose(m_current + 1);
    QWidget::keyPressEvent(event);
}

void PageDots::choose(int page) {
    if (page < 0 || page >= m_names.size() || page == m_current || !m_action) return;
    m_action(page);
}

} // namespace app
