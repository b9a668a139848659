#pragma once

#include "tests/support/Child.h"

#include <string>

namespace support {

/// A virtual X11 display (Xvfb on a display number that is free) with a window manager (openbox), for tests
/// where a real window matters. DISPLAY and QT_QPA_PLATFORM are set for this process: make it before
/// QApplication, and let it outlive it. Both children end with the object, and with this process. Throws
/// std::runtime_error when one can't be started.
class DisplayServer {
public:
    /// The screen's size in pixels, like "1280x800".
    explicit DisplayServer(const std::string& size = "1280x800");
    ~DisplayServer();
    DisplayServer(const DisplayServer&) = delete;
    DisplayServer& operator=(const DisplayServer&) = delete;

private:
    Child m_server;
    Child m_windowManager;
};

} // namespace support
