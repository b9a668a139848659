#pragma once

#include "app/SourceSearch.h"
#include "core/player/TulPlayer.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace app {

/// Carries out what is to be opened or appended to the playlist, in the order of the commands, without
/// waiting for a disk. What was to be appended to a list goes with that list.
///
/// Threads: main thread only. To be destroyed before the player.
class SourceQueue {
public:
    enum class Then { nothing, play /**< the first one, if nothing plays */ };

    /// `changed` is called when the list, or what is said here of the work, has changed.
    SourceQueue(TulPlayer& player, std::function<void()> changed);
    ~SourceQueue();
    SourceQueue(const SourceQueue&) = delete;
    SourceQueue& operator=(const SourceQueue&) = delete;

    void append(std::vector<std::string> sources, SourceSearch::Take take, Then then = Then::nothing);
    void openPlaylist(const std::string& path);
    void selectInternalPlaylist(std::int32_t index);
    /// Opens a list that was changed and left (`ListKeeper::lists`).
    void openUnsaved(const UnsavedList& list);
    void revertPlaylist();
    void savePlaylist(const std::string& path);
    void clearPlaylist();

    /// Folders are being looked through.
    [[nodiscard]] bool isSearching() const { return m_search != nullptr; }
    /// How many files the last search passed over: they are not audio.
    [[nodiscard]] std::size_t skipped() const { return m_skipped; }
    /// A file that could not be read or written whole; with an empty path, changes that could not be stored.
    struct Problem {
        std::string path;
        FileStatus status = FileStatus::done;
        int number = 0; ///< Counts them.
    };
    /// That of the last command; its status is FileStatus::done when there was none.
    [[nodiscard]] const Problem& problem() const { return m_problem; }

private:
    struct Command {
        std::vector<std::string> sources;
        SourceSearch::Take take;
        Then then;
        std::uint64_t list; ///< The id of the one to append to; 0 for the one that is being opened.
    };
    /// One that is carried out; shared with its worker.
    struct Search {
        Command command;
        std::atomic<bool> goesOn{true};
    };

    std::function<void(TulPlayer::Opening)> beginOpening();
    void endOpening();
    void startNext();
    void giveUp();
    void takeFound(const std::shared_ptr<Search>& search, SourceSearch::Found& found);

    TulPlayer& m_player;
    std::function<void()> m_changed;
    std::deque<Command> m_waiting;
    std::shared_ptr<Search> m_search;
    std::uint64_t m_opening = 0; ///< Counts what was to be opened; only the last counts.
    bool m_opens = false;
    std::size_t m_skipped = 0;
    Problem m_problem;
};

} // namespace app
