#pragma once

#include "app/SourceSearch.h"
#include "app/editing/PlaylistEditor.h"
#include "core/player/TulPlayer.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace app {

/// Queue of commands that open or add sources, carried out in order and in the background. Additions to a
/// list are dropped when another replaces it.
///
/// Threads: main thread only. To be destroyed before the player.
class SourceQueue {
public:
    enum class Then {
        nothing,
        play,      ///< The first one, if nothing plays.
        playAtOnce ///< The first one, whatever plays.
    };

    /// `changed` is called when the list, or what is said here of the work, has changed.
    SourceQueue(TulPlayer& player, PlaylistEditor& editor, std::function<void()> changed);
    ~SourceQueue();
    SourceQueue(const SourceQueue&) = delete;
    SourceQueue& operator=(const SourceQueue&) = delete;

    void append(std::vector<std::string> sources, SourceSearch::Take take, Then then = Then::nothing) {
        add(std::move(sources), take, then, {});
    }
    /// What was dropped: before an entry of the list by its id, or at the end (0).
    void drop(std::vector<std::string> sources, std::uint64_t beforeEntry) {
        add(std::move(sources), SourceSearch::Take::contents, Then::nothing,
            {.beforeEntry = beforeEntry, .isDrop = true});
    }
    void openPlaylist(const std::string& path);
    void selectInternalPlaylist(std::int32_t index);
    /// As TulPlayer::restorePlaylist. What is added meanwhile goes to that list.
    void restorePlaylist(const std::string& path, std::int64_t changedAt, const TulResumption& resumption,
                         TulPlayer::Opened opened);
    /// Opens a list that was changed and left (`ListKeeper::lists`).
    void openUnsaved(const UnsavedList& list);
    void revertPlaylist();
    void savePlaylist(const std::string& path);
    void clearPlaylist();

    /// True while folders are searched.
    [[nodiscard]] bool isSearching() const { return m_search != nullptr; }
    /// Files that the last search skipped, because they are not audio.
    [[nodiscard]] std::size_t skipped() const { return m_skipped; }
    /// A file that could not be read or written whole; with an empty path, changes that could not be stored.
    struct Problem {
        std::string path;
        FileStatus status = FileStatus::done;
        int number = 0; ///< Counts them.
    };
    /// The problem of the last command; its status is FileStatus::done for none.
    [[nodiscard]] const Problem& problem() const { return m_problem; }

private:
    struct Command {
        std::vector<std::string> sources;
        SourceSearch::Take take;
        Then then;
        PlaylistEditor::Place place;
        std::uint64_t list;   ///< The id of the one to add to; 0 for the one that is being opened.
        std::uint64_t action; ///< The editor's number.
    };
    /// One that is carried out; shared with its worker.
    struct Search {
        Command command;
        std::atomic<bool> goesOn{true};
    };

    void add(std::vector<std::string> sources, SourceSearch::Take take, Then then,
             PlaylistEditor::Place place);
    std::function<void(TulPlayer::Opening)> beginOpening();
    void endOpening();
    void startNext();
    void giveUp();
    void takeFound(const std::shared_ptr<Search>& search, SourceSearch::Found& found);

    TulPlayer& m_player;
    PlaylistEditor& m_editor;
    std::function<void()> m_changed;
    std::deque<Command> m_waiting;
    std::shared_ptr<Search> m_search;
    std::uint64_t m_opening = 0; ///< Counts what was to be opened; only the last counts.
    bool m_opens = false;
    std::size_t m_skipped = 0;
    Problem m_problem;
};

} // namespace app
