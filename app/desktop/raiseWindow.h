#pragma once

#include <QString>

class QWidget;

namespace app {

/// Brings the window to the front, also from a minimised state. `activationToken` is what the desktop gave
/// to the program that asks for it, if any: without one, Wayland's compositors leave the window where it is.
void raiseWindow(QWidget& window, const QString& activationToken = {});

} // namespace app
