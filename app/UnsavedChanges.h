#pragma once

#include <QTimer>

class TulPlayer;

namespace app {

/// Has the changes of the playlist stored soon after the last one, a part at a time, also while a prompt is
/// open.
///
/// Threads: main thread only. To be destroyed before the player.
class UnsavedChanges {
public:
    explicit UnsavedChanges(TulPlayer& player);

    /// The playlist has been edited.
    void noteEdit();
    /// Notices what is no edit and has to be stored all the same: another entry of a changed list is current.
    /// To be called now and then.
    void check();

private:
    void store();

    TulPlayer& m_player;
    QTimer m_timer;
};

} // namespace app
