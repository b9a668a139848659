#include "app/WindowSize.h"

#include "controls/CustomWindow.h"
#include "platform/cocoa/Scale.h"
#include "platform/cocoa/UserDefaults.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace app {
namespace {

using namespace std::chrono_literals;

const QString heightKey = QStringLiteral("WindowHeight");

constexpr int designWidth = 380;
constexpr int designHeight = 600;
constexpr int rowHeight = 55;
/// Two rows between the controls and the selector.
constexpr int minHeight = designHeight - 382 + 2 * rowHeight;

constexpr auto storeDelay = 1s;

} // namespace

WindowSize::WindowSize(CustomWindow& window, cocoa::UserDefaults& defaults)
    : m_window(window), m_defaults(defaults) {
    defaults.registerDefaults({{heightKey, designHeight}});
    m_height = std::max(minHeight, defaults.integerForKey(heightKey));
    m_storeSoon.setSingleShot(true);
    m_storeSoon.callOnTimeout([this] { store(); });
    window.installEventFilter(this);
    connect(&cocoa::Scale::shared(), &cocoa::Scale::changed, this, &WindowSize::fit);
    fit();
}

WindowSize::~WindowSize() = default;

QSizeF WindowSize::minDesignSize() {
    return {designWidth, minHeight};
}

void WindowSize::growByRows(int rows) {
    const int least = m_window.minimumHeight();
    const int most = std::max(least, m_window.visibleFrame().height());
    resize({m_window.width(),
            std::clamp(m_window.height() + cocoa::scaledToInt(rows * rowHeight), least, most)});
}

void WindowSize::store() {
    m_storeSoon.stop();
    if (!std::exchange(m_isChanged, false)) return;
    m_defaults.setObject(m_height, heightKey);
}

void WindowSize::fit() {
    const int free = m_window.visibleFrame().height();
    const int least = std::min(cocoa::scaledToInt(minHeight), free);
    const int width = cocoa::scaledToInt(designWidth);
    m_givenHeight = std::clamp(cocoa::scaledToInt(m_height), least, free);
    // In one step: each size on the way would count as the user's.
    m_window.setMinimumSize(std::min(width, m_window.width()), std::min(least, m_window.height()));
    m_window.setMaximumWidth(std::max(width, m_window.width()));
    resize({width, m_givenHeight});
    m_window.setFixedWidth(width);
    m_window.setMinimumHeight(least);
}

/// A window that is open stays within the free part of the screen if it was, where the compositor lets it.
void WindowSize::resize(const QSize& size) {
    const QRect free = m_window.visibleFrame();
    const QRect before = m_window.geometry();
    m_window.resize(size);
    if (!m_window.isVisible() || !free.contains(before)) return;
    const int left = std::max(free.left(), std::min(before.left(), free.right() + 1 - size.width()));
    const int top = std::max(free.top(), std::min(before.top(), free.bottom() + 1 - size.height()));
    if (QPoint(left, top) != before.topLeft()) m_window.move(left, top);
}

void WindowSize::noteHeight() {
    if (m_window.height() == m_givenHeight) return;
    m_givenHeight = m_window.height();
    m_height = qRound(m_givenHeight / cocoa::Scale::shared().factor());
    m_isChanged = true;
    m_storeSoon.start(storeDelay);
}

/// The screen that the window is on now, and its panels.
void WindowSize::watchScreen() {
    disconnect(m_screen);
    m_screen = connect(m_window.screen(), &QScreen::availableGeometryChanged, this, &WindowSize::fit);
    fit();
}

bool WindowSize::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Show && !m_screen) {
        connect(m_window.windowHandle(), &QWindow::screenChanged, this, &WindowSize::watchScreen);
        watchScreen();
    }
    if (event->type() == QEvent::Resize && m_window.isVisible()) noteHeight();
    return QObject::eventFilter(watched, event);
}

} // namespace app
