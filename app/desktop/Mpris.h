#pragma once

#include "app/desktop/MprisPlayer.h"
#include "app/desktop/MprisRoot.h"

#include <QObject>

class FenAppDelegate;

namespace app {

/// The program on the session bus, as MPRIS 2.2 has it: what media keys, panels, headsets and telephones use
/// to see and steer what plays. Without a bus nothing happens. A second copy of the program gets a name with
/// its process number in it.
///
/// Threads: main thread only; the delegate must outlive it.
class Mpris : public QObject {
public:
    /// The bus is not touched before the first update.
    explicit Mpris(FenAppDelegate& delegate);

    /// To be called at every slow tick: tells the bus what has changed.
    void update();

private:
    enum class State { untried, there, impossible };
    bool appear();

    MprisRoot m_root;
    MprisPlayer m_player;
    State m_state = State::untried;
};

} // namespace app
