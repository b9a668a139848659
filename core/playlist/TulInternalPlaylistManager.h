#pragma once

#include "core/files/FileStatus.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Registers every playlist file that was opened or saved, by path and name, in one JSON file: the store.
/// Programs that run at the same time share it. Entries are never removed.
///
/// Threads: one at a time. The player's object belongs to the main thread; workers load and save copies,
/// which are merged back by `takeStored`.
class TulInternalPlaylistManager {
public:
    /// Path and name, in the order of registration.
    std::vector<std::pair<std::string, std::string>> playlists;
    /// The internal playlist that is open; -1 for none.
    std::int32_t currentIndex = -1;
    std::string storePath;

    /// Further ones are not registered.
    static constexpr std::size_t maxPlaylists = 20'000;

    /// Replaces `playlists` by the store's valid pairs: none when the store is missing or unusable.
    FileStatus load();
    /// Merges with the store: adds missing playlists and renames to it, and takes over what other programs
    /// have added and renamed. A store that cannot be read completely is left alone, and the next save tries
    /// again. Makes the store's folder when it is missing.
    FileStatus save();

    [[nodiscard]] std::int64_t count() const;
    /// The index must be valid.
    [[nodiscard]] std::pair<std::string, std::string> playlistAt(std::int32_t index) const;
    /// The index of the first playlist of that name, or -1.
    [[nodiscard]] std::int32_t indexOfName(const std::string& name) const;
    /// Appends a playlist and makes it current, unless the name is empty or the path is registered.
    void addPlaylist(const std::string& name, const std::string& path);
    /// Renames a registered playlist, unless the name is empty.
    void renamePlaylist(const std::string& path, const std::string& name);

    /// Merges what a copy of this has loaded or saved. Changes made here since then are kept.
    void takeStored(const TulInternalPlaylistManager& copy);

private:
    using Pairs = std::vector<std::pair<std::string, std::string>>;

    void mergeInto(Pairs stored);

    Pairs m_renames;      ///< Path and new name, in order; not in the store yet.
    Pairs m_savedRenames; ///< The renames that the last save has stored.
};
