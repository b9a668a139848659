#pragma once

#include <QSocketNotifier>

#include <functional>

namespace app {

/// Runs `finish` and ends the process without exit handlers and static destructors, which would wait for
/// threads that hang. The process ends after 250 ms even if `finish` does not return.
[[noreturn]] void endProcess(int status, const std::function<void()>& finish);

/// Calls `end` with the exit status when exit() is called, as the toolkit does when it loses the display. The
/// callers are still on the stack then.
void callAtExit(std::function<void(int status)> end);

/// Calls `quit` on the event loop when SIGTERM, SIGINT or SIGHUP asks the process to end. The second such
/// signal ends it at once.
///
/// Threads: main thread only. One a process.
class QuitSignals {
public:
    explicit QuitSignals(std::function<void()> quit);
    ~QuitSignals();
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

private:
    QSocketNotifier m_notifier;
};

} // namespace app
