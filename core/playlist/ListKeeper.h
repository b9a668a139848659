#pragma once

#include "core/background/Workers.h"
#include "core/files/FileStatus.h"
#include "core/playlist/UnsavedListDocument.h"
#include "core/playlist/UnsavedLists.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class TulPlaylist;

/// Stores and restores changed playlists that have not been saved: the current one, and those that were
/// replaced by another ("set aside"). Saving or reverting a list removes its stored changes.
///
/// Threads: main thread only. Workers write and read, one job at a time (Workers::Lane::saving).
class ListKeeper {
public:
    /// `failed` is called when changes could not be stored.
    ListKeeper(Workers& workers, std::function<void(FileStatus status)> failed);

    /// The folder to store in. Nothing is stored before this call.
    void setFolder(const std::string& folder);
    /// Called when `lists` has changed.
    std::function<void()> changed;
    /// The lists that are set aside, the last changed first.
    [[nodiscard]] const std::vector<UnsavedList>& lists() const { return m_lists; }

    /// True when `list` is set aside as `id` and has not changed since.
    [[nodiscard]] bool isSetAsideAs(const std::string& id, const TulPlaylist& list) const;
    /// True when nothing of this list remains to be stored, or storing it has failed.
    [[nodiscard]] bool isKept(const TulPlaylist& list) const;
    /// Stores the current list in steps of at most `limit`. False when it is to be called again.
    bool keep(const TulPlaylist& list, std::chrono::milliseconds limit);
    /// Receives the list that was passed to `leave`.
    using Back = std::function<void(std::unique_ptr<TulPlaylist> list)>;
    /// Sets a list aside that another has replaced. Passes it to `back` when it is stored: at once, if it is
    /// already.
    void leave(std::unique_ptr<TulPlaylist> list, const Back& back);
    /// Removes what is stored of a list that belongs to `file` (empty for none).
    void discard(std::uint64_t list, const std::string& file);
    /// A function for the worker that saves the list to `file`: removes what is stored of the list now.
    [[nodiscard]] std::function<void()> removal(std::uint64_t list, const std::string& file) const;
    /// Notifies that the list was saved to `file` as it was after `edits` edits.
    void noteSaved(std::uint64_t list, std::uint64_t edits, const std::string& file);

    /// Receives the list, or null when nothing is stored or it cannot be read. `unread` is its `unreadCount`.
    using Restored = std::function<void(std::unique_ptr<TulPlaylist> list, std::size_t unread)>;
    void restore(const std::string& id, Restored restored);
    /// Restores the unsaved changes of a playlist file.
    void restoreFile(const std::string& file, Restored restored);
    /// The list without a file that was changed last at this time, in milliseconds since 1970. One that was
    /// changed soon after is taken for it: the time may have been noted before the last change.
    void restoreNameless(std::int64_t changedAt, Restored restored);

private:
    /// What is stored of one list.
    struct Kept {
        std::string
            restoredFrom; ///< The id under which it is set aside; empty when it is in this program's slot.
        std::uint64_t edits = 0;
        std::int32_t index = 0;
        bool failed =
            false; ///< It could not be stored. Retried after the next edit, and when the list is replaced.
    };
    /// A document that is being written.
    struct Draft;
    using Job = std::function<FileStatus(UnsavedLists& lists)>;
    using Find = std::function<std::string(UnsavedLists& lists)>;

    [[nodiscard]] bool isStored(const TulPlaylist& list) const;
    /// Runs a job on a worker; `then` receives its result.
    void run(Job job, std::function<void(FileStatus)> then = {});
    void noteFailure(std::uint64_t list, const std::string& restoredFrom);
    void restoreFound(Find find, Restored restored);

    Workers& m_workers;
    std::function<void(FileStatus)> m_failed;
    std::shared_ptr<UnsavedLists> m_folder;
    std::vector<UnsavedList> m_lists;
    std::unordered_map<std::uint64_t, Kept> m_kept; ///< By the playlists' ids.
    std::shared_ptr<Draft> m_draft;
};
