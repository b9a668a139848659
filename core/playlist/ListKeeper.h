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

/// Keeps the changes that are in no playlist file: stores the list that is shown, sets aside the lists that
/// are left, and brings them back. What is kept of a list goes when it is saved or reverted.
///
/// Threads: main thread only. Workers write and read, one job after another (Workers::Lane::saving).
class ListKeeper {
public:
    /// `failed` is called when changes could not be stored.
    ListKeeper(Workers& workers, std::function<void(FileStatus status)> failed);

    /// Where they are kept; nothing is before this call.
    void setFolder(const std::string& folder);
    /// Called when the lists below have changed.
    std::function<void()> changed;
    /// Those that are set aside, the one changed last first.
    [[nodiscard]] const std::vector<UnsavedList>& lists() const { return m_lists; }

    /// The list is the one that is set aside as `id`, as it is there.
    [[nodiscard]] bool isSetAsideAs(const std::string& id, const TulPlaylist& list) const;
    /// Nothing of this list is to be stored, or it was tried in vain.
    [[nodiscard]] bool isKept(const TulPlaylist& list) const;
    /// Stores the list that is shown, as far as it gets within `limit`. False: to be called again.
    bool keep(const TulPlaylist& list, std::chrono::milliseconds limit);
    /// Gets a list back.
    using Back = std::function<void(std::unique_ptr<TulPlaylist> list)>;
    /// The list is not shown any more. It is given back when it is stored: at once, if it is.
    void leave(std::unique_ptr<TulPlaylist> list, const Back& back);
    /// Removes what is kept of a list that belongs to `file` (empty for none): its changes are discarded.
    void discard(std::uint64_t list, const std::string& file);
    /// A job for the worker that has saved the list, as it is now, to `file`: removes what is kept of it.
    [[nodiscard]] std::function<void()> removal(std::uint64_t list, const std::string& file) const;
    /// The list was saved as it was after so many edits.
    void noteSaved(std::uint64_t list, std::uint64_t edits, const std::string& file);

    /// Gets null when nothing is kept, or it cannot be read. `unread` is the list's `unreadCount`.
    using Restored = std::function<void(std::unique_ptr<TulPlaylist> list, std::size_t unread)>;
    void restore(const std::string& id, Restored restored);
    /// The changes of a playlist file.
    void restoreFile(const std::string& file, Restored restored);
    /// The list without a file that was changed last at this time, in milliseconds since 1970. One that was
    /// changed soon after is taken for it: the time may have been noted before the last change.
    void restoreNameless(std::int64_t changedAt, Restored restored);

private:
    /// Of one list.
    struct Kept {
        std::string takenUpFrom; ///< Where it is set aside; empty when it is in this program's place.
        std::uint64_t edits = 0;
        std::int32_t index = 0;
        bool failed = false; ///< It could not be stored. Tried again when it is changed again or left.
    };
    /// A document that is being made.
    struct Draft;
    using Job = std::function<FileStatus(UnsavedLists& lists)>;
    using Find = std::function<std::string(UnsavedLists& lists)>;

    [[nodiscard]] bool isStored(const TulPlaylist& list) const;
    /// `then` gets what the job has answered.
    void run(Job job, std::function<void(FileStatus)> then = {});
    void noteFailure(std::uint64_t list, const std::string& takenUpFrom);
    void restoreFound(Find find, Restored restored);

    Workers& m_workers;
    std::function<void(FileStatus)> m_failed;
    std::shared_ptr<UnsavedLists> m_folder;
    std::vector<UnsavedList> m_lists;
    std::unordered_map<std::uint64_t, Kept> m_kept; ///< By the playlists' ids.
    std::shared_ptr<Draft> m_draft;
};
