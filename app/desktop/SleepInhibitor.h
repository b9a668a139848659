#pragma once

#include <QDBusPendingCallWatcher>
#include <QObject>

#include <cstddef>
#include <functional>

class QDBusConnection;
class Workers;

namespace app {

/// Keeps the machine from suspending by itself for want of input; the screen may go dark, and the user may
/// suspend it. Asks the desktop's portal, then its power management, then logind; where there is none of
/// them, nothing happens. What is held goes with the process.
///
/// Threads: main thread only, which never waits for a service. The workers must outlive it.
class SleepInhibitor : public QObject {
public:
    explicit SleepInhibitor(Workers& workers) : m_workers(workers) {}

    /// May be called as often as one likes.
    void setInhibits(bool inhibits);

private:
    void follow();
    void ask(std::size_t way);
    void take(std::size_t way, const QDBusPendingCall& answer);

    Workers& m_workers;
    bool m_inhibits = false;         ///< What is wanted.
    bool m_isAsking = false;         ///< A service has not answered yet.
    bool m_isRefused = false;        ///< By all of them, until it is wanted anew.
    std::function<void()> m_release; ///< Empty while nothing is held.
};

} // namespace app
