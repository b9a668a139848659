#pragma once

#include "core/playlist/TulPlaylistEntry.h"

#include <cstddef>
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
    /// The playlist file that it was read from or saved to last; empty when there is none.
    std::string path;
    /// No other list of this run has it.
    const std::uint64_t id = nextId();

    [[nodiscard]] std::int64_t entryCount() const;
    /// How many entries' tags are still to be read.
    [[nodiscard]] std::size_t unreadCount() const;
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

    /// Appends an entry for a path or an address, with what its tags say, which are read at once.
    void addEntry(const std::string& source);
    void appendEntry(std::unique_ptr<TulPlaylistEntry> entry);

    /// Moves one entry so that it ends at index `to`; past the end means the last index. The current index
    /// follows the active entry. An index below 0, or a source outside the list, changes nothing.
    void moveEntries(std::int32_t from, std::int32_t to);

    /// What the user does to the list (not the selection of an entry) makes it differ from its file. The
    /// operations above note it; who writes to `entries` or `name` calls this.
    void markChanged() { markChanged(now()); }
    /// `at` is in milliseconds since 1970.
    void markChanged(std::int64_t at);
    /// `file` holds the list as it was after so many edits.
    void markSaved(const std::string& file, std::uint64_t edits);
    /// Counts the changes since the list was made.
    [[nodiscard]] std::uint64_t edits() const { return m_edits; }
    [[nodiscard]] bool isChanged() const { return m_edits != m_savedEdits; }
    /// Of the last edit, in milliseconds since 1970; 0 when there was none.
    [[nodiscard]] std::int64_t changedAt() const { return m_changedAt; }

    /// A list of what playlist files keep of this one.
    [[nodiscard]] std::unique_ptr<TulPlaylist> copyToSave() const;

private:
    static std::uint64_t nextId();
    static std::int64_t now();
    [[nodiscard]] std::int32_t followingIndex() const;

    std::uint64_t m_edits = 0;
    std::uint64_t m_savedEdits = 0;
    std::int64_t m_changedAt = 0;
};
