#include "platform/cocoa/Window.h"

#include <QScreen>
#include <QWindow>

namespace cocoa {

Window::Window(QWidget* parent) : QWidget(parent, Qt::Window | Qt::FramelessWindowHint) {
    setAttribute(Qt::WA_TranslucentBackground);
}

bool Window::hasShadow() const {
    return m_hasShadow;
}

void Window::setHasShadow(bool shadow) {
    if (shadow == m_hasShadow) return;
    m_hasShadow = shadow;
    if (windowHandle() != nullptr) windowHandle()->setFlag(Qt::NoDropShadowWindowHint, !shadow);
    update();
}

QRect Window::visibleFrame() const {
    return screen() == nullptr ? QRect() : screen()->availableGeometry();
}

} // namespace cocoa
