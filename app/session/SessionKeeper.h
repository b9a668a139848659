#pragma once

#include "app/session/Session.h"

#include <QElapsedTimer>
#include <QObject>

#include <filesystem>

class FenAppDelegate;

namespace app {

class SourceQueue;

/// Brings back what the last run of the program has left, and stores what this one leaves: soon after each
/// change, and every half minute while something plays. Without the user's wish that is no more than volume
/// and balance.
///
/// A mark on the disk stands as long as a list and its current entry are being restored. A start that finds
/// it restores neither, since they may have crashed the program.
///
/// Threads: main thread only; workers write. The delegate must outlive it.
class SessionKeeper : public QObject {
public:
    /// Reads what was left.
    explicit SessionKeeper(FenAppDelegate& delegate);

    /// The steps of the start, in this order: as soon as there is a player, ...
    void restoreVolume();
    /// ... right before the window is shown, ...
    void restoreWindow();
    /// ... and when the kept lists can be reached.
    void restoreList(SourceQueue& sources);
    /// `restoreList` will bring back a list, or does so.
    [[nodiscard]] bool restoresList() const { return m_state != State::restored; }
    /// Plays as soon as that is there; at once, when nothing is to be restored.
    void playWhenRestored();

    /// Stores what has changed and rests. To be called now and then.
    void check();
    /// Stores what has changed now.
    void store();

private:
    enum class State {
        toBeRestored, ///< A list, which is not there yet.
        opening,      ///< The list is there, its current entry is being opened.
        restored,     ///< Or there was nothing to restore.
    };

    [[nodiscard]] Session now() const;
    void noteListRestored();
    void finishRestoring();
    void write(const Session& session);
    void run(std::function<void()> job);

    FenAppDelegate& m_delegate;
    const std::filesystem::path m_folder;
    State m_state = State::restored;
    Session m_left;   ///< By the last run.
    Session m_seen;   ///< By the last `check`.
    Session m_stored; ///< In the file.
    bool m_plays = false;
    QElapsedTimer m_sinceStored;
};

} // namespace app
