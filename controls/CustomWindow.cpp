#include "controls/CustomWindow.h"

#include <QAbstractButton>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>

#include <algorithm>

namespace {

/// A rectangle of the screen in coordinates whose y grows upward, from Qt's whose y grows downward. All share
/// the origin, so only differences of y have a meaning.
QRectF flipped(const QRect& rect) {
    return {static_cast<double>(rect.x()), static_cast<double>(-(rect.y() + rect.height())),
            static_cast<double>(rect.width()), static_cast<double>(rect.height())};
}

/// Where clients may not place themselves, only the compositor moves windows.
bool compositorPlacesWindows() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace

CustomWindow::CustomWindow(QWidget* parent) : Window(parent) {
    setAttribute(Qt::WA_ShowWithoutActivating, !canBecomeKeyWindow());
}

std::unique_ptr<CustomWindow> CustomWindow::initWithContentRect(const QRect& contentRect) {
    auto window = std::make_unique<CustomWindow>();
    window->setGeometry(contentRect);
    return window;
}

QPointF CustomWindow::draggedOrigin(const QRectF& visibleFrame, const QRectF& frame, const QPointF& location,
                                    const QPointF& initialLocation) {
    const QPointF origin = frame.topLeft() + location - initialLocation;
    const double highest = visibleFrame.y() + visibleFrame.height() - frame.height();
    return {origin.x(), std::min(origin.y(), highest)};
}

bool CustomWindow::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride && qobject_cast<QAbstractButton*>(focusWidget())) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Space && key->modifiers() == Qt::NoModifier) {
            event->accept();
            return true;
        }
    }
    return Window::event(event);
}

void CustomWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return Window::mousePressEvent(event);
    m_initialLocation = locationInWindow(event->globalPosition());
    m_dragging = true;
}

void CustomWindow::mouseMoveEvent(QMouseEvent* event) {
    if (!m_dragging) return Window::mouseMoveEvent(event);
    if (compositorPlacesWindows()) {
        m_dragging = false;
        windowHandle()->startSystemMove();
        return;
    }
    const QRectF frame = flipped(geometry());
    const QPointF location = locationInWindow(event->globalPosition());
    const QPointF origin = draggedOrigin(flipped(visibleFrame()), frame, location, m_initialLocation);
    move(qRound(origin.x()), qRound(-(origin.y() + frame.height())));
}

void CustomWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) m_dragging = false;
}

QPointF CustomWindow::locationInWindow(const QPointF& global) const {
    // Relative to the position requested last: until the server has moved the window, the event's local
    // position refers to the old one, and the window would oscillate.
    return {global.x() - x(), y() + height() - global.y()};
}
