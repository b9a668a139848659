#pragma once

#include "tests/support/Child.h"

namespace support {

/// A virtual X11 display of 1280x800 pixels (Xvfb on a free display number) with a window manager (openbox),
/// for tests where a real window matters. DISPLAY and QT_QPA_PLATFORM are set for this process: make it
/// before QApplication, and let it outlive it. Both children end with the object, and with this process.
/// Throws std::runtime_error when one can't be started.
class DisplayServer {
public:
    DisplayServer();
    ~DisplayServer();
    DisplayServer(const DisplayServer&) = delete;
    DisplayServer& operator=(const DisplayServer&) = delete;

private:
    Child m_server;
    Child m_windowManager;
};

} // namespace support
