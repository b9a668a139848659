#pragma once

#include "app/desktop/MprisPlayer.h"
#include "app/desktop/MprisRoot.h"

#include <QObject>
#include <QTimer>

class FenAppDelegate;

namespace app {

/// The program on the session bus, as MPRIS 2.2 has it: what media keys, panels, headsets and telephones use
/// to see and steer what plays. Without a bus nothing happens. A second copy of the program gets a name with
/// its process number in it.
///
/// Threads: main thread only; the delegate must outlive it.
class Mpris : public QObject {
public:
    /// The bus is not touched before the window has had time to show.
    explicit Mpris(FenAppDelegate& delegate);

private:
    enum class State { untried, there, impossible };
    void look();
    bool appear();

    MprisRoot m_root;
    MprisPlayer m_player;
    State m_state = State::untried;
    /// Goes on under prompts and open menus, as the sound does.
    QTimer m_looking;
};

} // namespace app
