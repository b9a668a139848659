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

/// A changed playlist that is kept while it is not shown.
struct UnsavedList {
    std::string id;
    std::string file; ///< Its playlist file; empty when it has none.
    std::string name;
    std::int64_t changedAt = 0; ///< Milliseconds since 1970.
    /// Its file has newer changes than these, or was saved without them: another program made them at the
    /// same time.
    bool isSeparate = false;
};

/// The folder that keeps changed playlists which have not been saved, one file each.
///
/// Several programs share it. Each has a place of its own in it, under a lock, for the list that it shows;
/// only the program that holds the lock writes there. A list that is left is set aside under a name that
/// nothing else has, and so is what a program that was killed has left in its place. What is set aside is
/// never written again, and removed only by the program that has taken the list up and has stored it in its
/// own place.
///
/// Threads: any. Every call blocks on the disk.
class UnsavedLists {
public:
    /// Made when something is stored. Empty: nothing is kept.
    explicit UnsavedLists(std::filesystem::path folder);

    /// Those set aside, the one changed last first. Of those with neither a name nor a file it removes all
    /// but the last ten.
    std::vector<UnsavedList> list();

    /// Replaces what is in this program's place, and then removes what the list was taken up from (an id, or
    /// empty).
    [[nodiscard]] FileStatus store(const std::string& text, const std::string& takenUpFrom);
    /// Moves what is in this program's place, if anything, to this id.
    void setAside(const std::string& id);
    /// Removes the list of this id, or what is in this program's place where `id` is empty.
    void remove(const std::string& id);
    /// Whatever else is set aside for this playlist file does no longer belong to it.
    void separateFrom(const std::string& file);

    /// Null when it is not there any more, or not readable.
    [[nodiscard]] std::unique_ptr<TulPlaylist> read(const std::string& id) const;

    /// No other list has it, in any program.
    static std::string newId();

private:
    using Lock = std::lock_guard<std::mutex>;

    bool claimPlace(const Lock& lock);
    [[nodiscard]] bool holdsPlace() const;
    void setAsideAbandoned(const Lock& lock);
    [[nodiscard]] std::vector<UnsavedList> readHeaders() const;
    [[nodiscard]] std::filesystem::path pathOf(const std::string& id) const;
    [[nodiscard]] std::filesystem::path place(int number) const;
    [[nodiscard]] std::filesystem::path lockOf(int number) const;
    [[nodiscard]] FileDescriptor lockPlace(int number) const;

    const std::filesystem::path m_folder;
    std::mutex m_mutex; ///< Guards this program's place and what follows.
    FileDescriptor m_placeLock;
    int m_place = 0; ///< 0 is none yet.
};
