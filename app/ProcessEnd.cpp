#include "app/ProcessEnd.h"

#include <csignal>
#include <cstdlib>
#include <thread>
#include <unistd.h>
#include <utility>

#include <fcntl.h>
#include <pthread.h>

namespace app {
namespace {

using namespace std::chrono_literals;

constexpr auto endLimit = 250ms;
constexpr int quitSignals[] = {SIGTERM, SIGINT, SIGHUP};

/// From the signal handler to the event loop.
int signalPipe[2] = {-1, -1};

void setHandlers(void (*handler)(int)) {
    for (const int number : quitSignals)
        std::signal(number, handler);
}

/// Signal handler: async-signal-safe calls only.
void noteSignal(int /*number*/) {
    setHandlers(SIG_DFL);
    static_cast<void>(!write(signalPipe[1], "", 1));
}

int openSignalPipe() {
    if (pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) == 0) setHandlers(&noteSignal);
    return signalPipe[0];
}

std::function<void(int)> atExit;

} // namespace

void endProcess(int status, const std::function<void()>& finish) {
    std::thread([status] {
        pthread_setname_np(pthread_self(), "tul-end");
        std::this_thread::sleep_for(endLimit);
        std::_Exit(status);
    }).detach();
    finish();
    std::_Exit(status);
}

void callAtExit(std::function<void(int)> end) {
    atExit = std::move(end);
    on_exit([](int status, void*) { atExit(status); }, nullptr);
}

QuitSignals::QuitSignals(std::function<void()> quit) : m_notifier(openSignalPipe(), QSocketNotifier::Read) {
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this, quit = std::move(quit)] {
        m_notifier.setEnabled(false);
        quit();
    });
}

QuitSignals::~QuitSignals() {
    setHandlers(SIG_DFL);
    m_notifier.setEnabled(false);
    close(signalPipe[0]);
    close(signalPipe[1]);
}

} // namespace app
