#include "app/desktop/raiseWindow.h"

#include <QGuiApplication>
#include <QWidget>

namespace app {

void raiseWindow(QWidget& window, const QString& activationToken) {
    // The toolkit's Wayland plugin takes it from there, once.
    const bool isWayland = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    if (isWayland && !activationToken.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8());
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace app
