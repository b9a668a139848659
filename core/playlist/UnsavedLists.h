#pragma once

#include "core/files/FileDescriptor.h"
#include "core/files/FileStatus.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

class TulPlaylist;

/// A changed playlist that was set aside.
struct UnsavedList {
    std::string id;
    std::string file; ///< Its playlist file; empty when it has none.
    std::string name;
    std::int64_t changedAt = 0; ///< Milliseconds since 1970.
    /// Its changes no longer belong to its file, because another program has stored newer changes or saved
    /// the file.
    bool isSeparate = false;
};

/// A folder with the changed playlists that have not been saved, one file each.
///
/// Several programs share it. Each stores its current list in a slot of its own, and holds the slot's lock. A
/// list that was replaced by another is set aside: its file is renamed to a unique name. So are the lists in
/// the slots of killed programs. A list that is set aside is never written again; the program that has
/// restored it removes it after storing the list in its own slot.
///
/// Threads: any. Every call blocks on the disk.
class UnsavedLists {
public:
    /// The folder is made when something is stored. An empty path disables storing.
    explicit UnsavedLists(std::filesystem::path folder);

    /// The lists that are set aside, the last changed first. Of those with neither name nor file it removes
    /// all but the last ten.
    std::vector<UnsavedList> list();

    /// Writes the list to this program's slot, then removes the list that it was restored from (an id, or
    /// empty).
    [[nodiscard]] FileStatus store(const std::string& text, const std::string& restoredFrom);
    /// Renames the list in this program's slot, if any, to `id`.
    void setAside(const std::string& id);
    /// Removes the list `id`, or that in this program's slot when `id` is empty.
    void remove(const std::string& id);
    /// Marks the other lists set aside for a playlist file as separate.
    void separateFrom(const std::string& file);

    /// Null when it was removed or cannot be read.
    [[nodiscard]] std::unique_ptr<TulPlaylist> read(const std::string& id) const;

    /// A random id, unique among all programs.
    static std::string newId();

private:
    using Lock = std::lock_guard<std::mutex>;

    bool claimSlot(const Lock& lock);
    [[nodiscard]] bool holdsSlot() const;
    void setAsideAbandoned(const Lock& lock);
    [[nodiscard]] std::vector<UnsavedList> readHeaders() const;
    [[nodiscard]] std::filesystem::path pathOf(const std::string& id) const;
    [[nodiscard]] std::filesystem::path slotPath(int number) const;
    [[nodiscard]] std::filesystem::path slotLockPath(int number) const;
    [[nodiscard]] FileDescriptor lockSlot(int number) const;

    const std::filesystem::path m_folder;
    std::mutex m_mutex; ///< Guards this program's slot and what follows.
    FileDescriptor m_slotLock;
    int m_slot = 0; ///< 0 for none.
};
