#pragma once

#include "core/playlist/ReadingProgress.h"
#include "core/playlist/TulPlaylistEntry.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// The ordered list of tracks that the player walks through. `currentIndex` is a valid index whenever the
/// list is not empty, and no entry but that one is active.
class TulPlaylist {
public:
    std::vector<std::unique_ptr<TulPlaylistEntry>> entries;
    std::string name;
    std::int32_t currentIndex = 0;

    [[nodiscard]] std::int64_t entryCount() const;
    /// Throws std::out_of_range for an index outside the list.
    [[nodiscard]] TulPlaylistEntry* entryAt(std::int32_t index) const;
    /// Throws std::out_of_range when the list is empty.
    [[nodiscard]] TulPlaylistEntry* currentEntry() const;

    /// Makes an entry current and active; an index outside the list changes nothing.
    void selectEntry(std::int32_t index);
    /// Select the neighbour, from the last entry on to the first and back; null when the list is empty.
    TulPlaylistEntry* nextEntry();
    TulPlaylistEntry* previousEntry();

    /// What nextEntry would select; null when the list is empty.
    [[nodiscard]] TulPlaylistEntry* followingEntry() const;

    /// Appends an entry for a path or an address, with what its tags say.
    void addEntry(const std::string& source);
    /// As addEntry on each, but on all cores.
    void addEntries(const std::vector<std::string>& sources, const ReadingProgress& progress = {});
    void appendEntry(std::unique_ptr<TulPlaylistEntry> entry);
    /// Fills what is missing in the entries from their tags, on all cores, and appends them.
    void appendEntries(std::vector<std::unique_ptr<TulPlaylistEntry>> unfilled,
                       const ReadingProgress& progress = {});

    /// Moves one entry so that it ends at index `to`; past the end means the last index. The current index
    /// follows the active entry. An index below 0, or a source outside the list, changes nothing.
    void moveEntries(std::int32_t from, std::int32_t to);

private:
    [[nodiscard]] std::int32_t followingIndex() const;
};
