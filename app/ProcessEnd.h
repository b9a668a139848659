#pragma once

#include <QSocketNotifier>

#include <functional>

namespace app {

/// Runs `finish` and ends the process, without exit handlers and static destructors: those would wait for
/// threads that a server or a disk keeps. Where `finish` does not return in time, the process ends without
/// it.
[[noreturn]] void endProcess(int status, const std::function<void()>& finish);

/// Calls `end` with the exit status when something calls exit(), as the toolkit does when the display is
/// gone: from inside, with what was in the middle of its work still on the stack.
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
