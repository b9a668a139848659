#pragma once

#include <string>
#include <sys/types.h>

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

    /// Like ":7".
    const std::string& display() const { return m_display; }

private:
    std::string m_display;
    pid_t m_server = -1;
    pid_t m_windowManager = -1;
};

} // namespace support
