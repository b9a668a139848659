#pragma once

#include "app/editing/EditCommands.h"
#include "app/editing/RowSort.h"
#include "core/player/TulPlayer.h"

#include <QAction>
#include <QUndoStack>

#include <cstdint>
#include <memory>

namespace app {

/// What the user does to the rows of the playlist, and takes back. Each operation is one step, unless it
/// changes nothing.
///
/// Threads: main thread only. To be destroyed before the player.
class PlaylistEditor {
public:
    explicit PlaylistEditor(TulPlayer& player);
    ~PlaylistEditor();
    PlaylistEditor(const PlaylistEditor&) = delete;
    PlaylistEditor& operator=(const PlaylistEditor&) = delete;

    /// The page and the queue of sources set their functions here, before anything is edited.
    EditedList list;

    void remove(const TulRows& rows);
    /// Moves rows, in their order, to before the row that is at `before` now; the row count means the end.
    void move(const TulRows& rows, std::int32_t before);
    /// By one row. Rows that have reached the end stay there, and others close up to them.
    void moveUp(const TulRows& rows);
    void moveDown(const TulRows& rows);
    /// Moves rows behind the one that plays.
    void playNext(const TulRows& rows);
    /// Texts are compared on a worker: the rows move when it has finished.
    void sort(SortKey key);
    void reverse();
    void randomise();

    struct Place {
        std::uint64_t beforeEntry = 0; ///< The id of an entry of the list; 0, or one that is gone: the end.
        bool isDrop = false;           ///< Not chosen in a dialog.
    };
    /// An action of the user begins that will add rows: its number.
    std::uint64_t beginAdding() { return ++m_lastAction; }
    /// Adds what has been found for it, as one step as long as nothing else is edited in between. Returns the
    /// first row.
    std::int32_t add(std::uint64_t action, const Place& place, TulPlaylist::Entries entries);

    /// For menus; with the name of what they would do.
    QAction& undoAction() { return m_undo; }
    QAction& redoAction() { return m_redo; }

private:
    template <typename Command, typename... Arguments> void push(Arguments&&... arguments);
    void moveTo(const TulRows& rows, TulRows to);
    void reorder(TulRows order, const QString& text);
    [[nodiscard]] std::int32_t rowCount() const;
    [[nodiscard]] std::int32_t rowOf(std::uint64_t entry);
    void showSteps();
    void takeReplaced(std::shared_ptr<LeftPlaylist> left, TulPlayer::Replacement why);
    /// Undoes or redoes, as soon as the list that it brings back has been stored.
    void step(void (QUndoStack::*direction)());

    QAction m_undo;
    QAction m_redo;
    void (QUndoStack::*m_waiting)() = nullptr; ///< A step that a list is awaited for.
    std::uint64_t m_lastAction = 0;
    std::uint64_t m_edits = 0;  ///< Counts every change, so that a sorted order is known to be outdated.
    std::int32_t m_lastRow = 0; ///< Where rowOf has found an entry.
    QUndoStack m_steps;         ///< Last, since it reports its end to the others.
};

} // namespace app
