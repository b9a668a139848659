#pragma once

#include "app/CommandLine.h"
#include "app/desktop/ApplicationService.h"
#include "app/desktop/StatusService.h"

#include <QObject>

class FenAppDelegate;
class QDBusMessage;

namespace app {

/// The one running player of a session, by its name on the session bus: another start hands over to it what
/// it was started with, and ends. Needs no QApplication before `serve`.
///
/// Threads: main thread only.
class SingleInstance {
public:
    enum class Start {
        primary,    ///< This process has the name; what others hand over waits for `serve`.
        withoutBus, ///< There is no bus to find another on.
        another,    ///< The user wants another window beside what runs.
        handedOver, ///< A running player has taken everything.
        noAnswer,   ///< One runs, but does not answer.
        notRunning, ///< None runs that could be controlled.
    };

    SingleInstance();

    /// Carries out what needs no window: blocks until a running player has answered, five seconds at most.
    Start start(const CommandLine& line);
    /// Follows `start` where a window is needed. The delegate must outlive it.
    void serve(FenAppDelegate& delegate);

private:
    Start control(const CommandLine& line);
    Start claim(const QDBusMessage& handOver);
    void publish();

    QObject m_object;
    ApplicationService m_application;
    StatusService m_status;
    bool m_isPublished = false;
};

} // namespace app
