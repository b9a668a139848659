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

void WindowSize::growByRows(int rows) {
    const QRect free = m_window.visibleFrame();
    const int wanted = m_window.height() + cocoa::scaledToInt(rows * rowHeight);
    const int height =
        std::clamp(wanted, m_window.minimumHeight(), std::max(m_window.minimumHeight(), free.height()));
    // The compositor places windows on its own where this does nothing.
    const int top = std::max(free.top(), std::min(m_window.y(), free.bottom() + 1 - height));
    if (top != m_window.y()) m_window.move(m_window.x(), top);
    m_window.resize(m_window.width(), height);
}

void WindowSize::store() {
    m_storeSoon.stop();
    if (!std::exchange(m_isChanged, false)) return;
    m_defaults.setObject(m_height, heightKey);
}

void WindowSize::fit() {
    const int free = m_window.visibleFrame().height();
    const int least = std::min(cocoa::scaledToInt(minHeight), free);
    m_givenHeight = std::clamp(cocoa::scaledToInt(m_height), least, free);
    m_window.setFixedWidth(cocoa::scaledToInt(designWidth));
    m_window.setMinimumHeight(least);
    m_window.resize(m_window.width(), m_givenHeight);
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
