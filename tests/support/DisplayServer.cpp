#include "tests/support/DisplayServer.h"

#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <cstdlib>
#include <stdexcept>

namespace support {
namespace {

constexpr std::chrono::seconds limit(30);

bool windowManagerRuns() {
    // Answers only once the window manager has begun to manage windows.
    return std::system("xprop -root _NET_CLIENT_LIST 2>/dev/null | grep -q '#'") == 0;
}

} // namespace

DisplayServer::DisplayServer() {
    const auto number = scratch() / "display";
    m_server =
        Child({"sh", "-c", "exec Xvfb -displayfd 1 -screen 0 1280x800x24 -nolisten tcp -noreset 2>/dev/null"},
              number);
    std::string line;
    if (!waitFor([&] { return (line = readFile(number)).ends_with('\n'); }, limit))
        throw std::runtime_error("Xvfb did not start");
    line.pop_back();
    setenv("DISPLAY", (":" + line).c_str(), 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    m_windowManager = Child({"openbox", "--sm-disable"});
    if (!waitFor(windowManagerRuns, limit)) throw std::runtime_error("openbox did not start");
}

DisplayServer::~DisplayServer() {
    m_windowManager.end();
    m_server.end(SIGTERM); // so that it takes its lock and socket away
}

} // namespace support
