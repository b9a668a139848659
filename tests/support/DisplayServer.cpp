#include "tests/support/DisplayServer.h"

#include "tests/support/WaitFor.h"

#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace support {
namespace {

/// Starts a program that ends with this process; its output is thrown away, `keptDescriptor` stays open in
/// it.
pid_t start(std::vector<std::string> command, int keptDescriptor = -1) {
    std::vector<char*> arguments;
    for (auto& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("fork failed");
    if (child > 0) return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (freopen("/dev/null", "w", stdout) == nullptr || freopen("/dev/null", "w", stderr) == nullptr)
        _exit(126);
    for (int descriptor = 3; descriptor < 256; ++descriptor) {
        if (descriptor != keptDescriptor) close(descriptor);
    }
    execvp(arguments[0], arguments.data());
    _exit(127);
}

void stop(pid_t child) {
    if (child <= 0) return;
    kill(child, SIGTERM);
    waitpid(child, nullptr, 0);
}

/// The display number that the server writes when it is ready; empty when it ends or takes half a minute.
std::string readLine(int descriptor) {
    std::string line;
    pollfd readable{descriptor, POLLIN, 0};
    char byte = 0;
    while (poll(&readable, 1, 30000) > 0 && read(descriptor, &byte, 1) == 1) {
        if (byte == '\n') return line;
        line += byte;
    }
    return {};
}

bool windowManagerRuns() {
    // Answers only once the window manager has begun to manage windows.
    return std::system("xprop -root _NET_CLIENT_LIST 2>/dev/null | grep -q '#'") == 0;
}

} // namespace

DisplayServer::DisplayServer(const std::string& size) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("pipe failed");
    m_server = start({"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0", size + "x24",
                      "-nolisten", "tcp", "-noreset"},
                     ends[1]);
    close(ends[1]);
    const std::string number = readLine(ends[0]);
    close(ends[0]);
    if (number.empty()) {
        stop(m_server);
        throw std::runtime_error("Xvfb did not start");
    }
    m_display = ":" + number;
    setenv("DISPLAY", m_display.c_str(), 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    m_windowManager = start({"openbox", "--sm-disable"});
    if (waitFor(windowManagerRuns, std::chrono::seconds(30))) return;
    stop(m_windowManager);
    stop(m_server);
    throw std::runtime_error("openbox did not start");
}

DisplayServer::~DisplayServer() {
    stop(m_windowManager);
    stop(m_server);
}

} // namespace support
