#include "controls/ResizeHandle.h"

#include "platform/cocoa/Scale.h"

#include <QMouseEvent>
#include <QWindow>

namespace {
constexpr double edge = 5;
constexpr double corner = 12;
} // namespace

ResizeHandle::ResizeHandle(QWidget* parent) : QWidget(parent) {
    setCursor(Qt::SizeVerCursor);
}

void ResizeHandle::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const int thickness = cocoa::scaledToInt(edge);
    const int side = cocoa::scaledToInt(corner);
    QRegion covered(0, height() - thickness, width(), thickness);
    covered += QRect(0, height() - side, side, side);
    covered += QRect(width() - side, height() - side, side, side);
    setMask(covered);
}

void ResizeHandle::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return QWidget::mousePressEvent(event);
    if (window()->windowHandle()->startSystemResize(Qt::BottomEdge)) return;
    m_dragging = true;
    m_grabOffset = window()->geometry().bottom() + 1 - qRound(event->globalPosition().y());
}

void ResizeHandle::mouseMoveEvent(QMouseEvent* event) {
    if (!m_dragging) return;
    const int bottom = qRound(event->globalPosition().y()) + m_grabOffset;
    window()->resize(window()->width(), bottom - window()->geometry().top());
}

void ResizeHandle::mouseReleaseEvent(QMouseEvent* /*event*/) {
    m_dragging = false;
}
