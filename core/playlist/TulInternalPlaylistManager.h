#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Remembers every playlist file that was opened or saved, by path and name, in one small JSON file.
class TulInternalPlaylistManager {
public:
    /// Path and name, in the order of registration.
    std::vector<std::pair<std::string, std::string>> playlists;
    /// The internal playlist now open; -1 is none.
    std::int32_t currentIndex = -1;
    std::string storePath;

    /// Replaces the list by the store's valid pairs: none when there is no store, or one that cannot be used.
    void load();
    /// Replaces the store. One on the disk that cannot be used is first set aside, as "….broken-1" and so on.
    void save() const;

    [[nodiscard]] std::int64_t count() const;
    /// The index must be valid.
    [[nodiscard]] std::pair<std::string, std::string> playlistAt(std::int32_t index) const;
    /// The first of that name, or -1.
    [[nodiscard]] std::int32_t indexOfName(const std::string& name) const;
    /// Appends a playlist and makes it current, unless it has no name or its path is known already.
    void addPlaylist(const std::string& name, const std::string& path);
};
