#pragma once

#include "core/files/FileStatus.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Remembers every playlist file that was opened or saved, by path and name, in one small JSON file: the
/// store. Programs that run at the same time share it. Nothing is ever taken out of it.
///
/// Threads: one at a time. The main thread owns the player's; workers load and save copies, which come back
/// by `takeStored`.
class TulInternalPlaylistManager {
public:
    /// Path and name, in the order of registration.
    std::vector<std::pair<std::string, std::string>> playlists;
    /// The internal playlist now open; -1 is none.
    std::int32_t currentIndex = -1;
    std::string storePath;

    /// More are not registered.
    static constexpr std::size_t maxPlaylists = 20'000;

    /// Replaces the list by the store's valid pairs: none when there is no store, or one that cannot be used.
    FileStatus load();
    /// Adds what the store does not have, renames there what has been renamed here, and takes over what other
    /// programs have added to it and renamed in it. A store that cannot be read whole is not touched; what is
    /// not saved then is by the next save. Makes the store's folder when it is missing.
    FileStatus save();

    [[nodiscard]] std::int64_t count() const;
    /// The index must be valid.
    [[nodiscard]] std::pair<std::string, std::string> playlistAt(std::int32_t index) const;
    /// The first of that name, or -1.
    [[nodiscard]] std::int32_t indexOfName(const std::string& name) const;
    /// Appends a playlist and makes it current, unless it has no name or its path is known already.
    void addPlaylist(const std::string& name, const std::string& path);
    /// Gives a known playlist another name, unless that is empty.
    void renamePlaylist(const std::string& path, const std::string& name);

    /// Takes over what a copy of this has loaded or saved. What has been changed here since stays.
    void takeStored(const TulInternalPlaylistManager& copy);

private:
    using Pairs = std::vector<std::pair<std::string, std::string>>;

    void mergeInto(Pairs stored);

    Pairs m_renames;      ///< Path and new name, in order; not in the store yet, …
    Pairs m_savedRenames; ///< … and those that the last save has brought there.
};
