#pragma once

#include "core/playlist/TulPlaylistEntry.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Rows of a list: ascending and unique.
using TulRows = std::vector<std::int32_t>;

/// An ordered list of tracks. `currentIndex` is a valid index whenever the list is not empty, and only the
/// entry there can be active.
///
/// An active entry that is removed is played to its end: it stays the current one until another is selected.
/// Meanwhile no entry is active, and `currentIndex` is that of the entry that follows.
class TulPlaylist {
public:
    using Entries = std::vector<std::unique_ptr<TulPlaylistEntry>>;
    /// The place of the active entry: its row, or if it has been removed, the row of the entry that follows.
    /// With no active entry (id 0) `row` is the current index.
    struct CurrentPlace {
        std::uint64_t entry = 0;
        std::int32_t row = 0;
    };

    Entries entries;
    std::string name;
    std::int32_t currentIndex = 0;
    /// The playlist file that the list was read from or saved to last; empty for none.
    std::string path;
    /// Unique among the lists of this process.
    const std::uint64_t id = nextId();

    [[nodiscard]] std::int64_t entryCount() const;
    /// The number of entries whose tags are still to be read.
    [[nodiscard]] std::size_t unreadCount() const;
    /// Throws std::out_of_range for an index outside the list.
    [[nodiscard]] TulPlaylistEntry* entryAt(std::int32_t index) const;
    /// Throws std::out_of_range when the list is empty.
    [[nodiscard]] TulPlaylistEntry* currentEntry() const;

    /// Makes an entry current and active; an index outside the list changes nothing.
    void selectEntry(std::int32_t index);
    /// Select and return the neighbour, wrapping around at both ends; null when the list is empty.
    TulPlaylistEntry* nextEntry();
    TulPlaylistEntry* previousEntry();

    /// The entry that nextEntry would select; null when the list is empty.
    [[nodiscard]] TulPlaylistEntry* followingEntry() const;

    /// Appends an entry for a path or an address. Reads its tags, which blocks on the file.
    void addEntry(const std::string& source);
    void appendEntry(std::unique_ptr<TulPlaylistEntry> entry);

    /// Moves one entry to index `to`; past the end means the last index. The current index follows the active
    /// entry. An index below 0, or a source outside the list, changes nothing.
    void moveEntries(std::int32_t from, std::int32_t to);

    /// The following functions change many rows at once; the rows must be in the list. The current index
    /// follows the active entry.

    /// Removes entries, and returns them in order.
    Entries removeEntries(const TulRows& rows);
    /// Inserts entries, which have the indexes `rows` afterwards: the inverse of removeEntries.
    void insertEntries(const TulRows& rows, Entries added);
    /// Moves entries, in their order, to the indexes `to`. Its inverse has the arguments exchanged.
    void moveEntries(const TulRows& from, const TulRows& to);
    /// Row i gets the entry of row order[i]; rows behind these stay. Returns the order of the inverse.
    TulRows reorderEntries(const TulRows& order);

    /// The row at which to insert an entry that is to be played next.
    [[nodiscard]] std::int32_t rowAfterCurrent() const;
    [[nodiscard]] bool currentIsRemoved() const { return m_removed.has_value(); }
    [[nodiscard]] CurrentPlace currentPlace() const;
    /// Restores the current index after a change was undone: to `place`, from before the change, unless
    /// another entry has been selected since.
    void restorePlace(const CurrentPlace& place);

    /// Counts an edit, by which the list differs from its file. The operations above call it, except the
    /// selection of an entry; whoever writes to `entries` or `name` must call it, too.
    void markChanged() { markChanged(now()); }
    /// `at` is in milliseconds since 1970.
    void markChanged(std::int64_t at);
    /// Notes that `file` holds the list as it was after `edits` edits.
    void markSaved(const std::string& file, std::uint64_t edits);
    /// The number of edits since the list was made.
    [[nodiscard]] std::uint64_t edits() const { return m_edits; }
    [[nodiscard]] bool isChanged() const { return m_edits != m_savedEdits; }
    /// The time of the last edit, in milliseconds since 1970; 0 for none.
    [[nodiscard]] std::int64_t changedAt() const { return m_changedAt; }

    /// A copy with the members that playlist files store.
    [[nodiscard]] std::unique_ptr<TulPlaylist> copyToSave() const;

private:
    static std::uint64_t nextId();
    static std::int64_t now();
    [[nodiscard]] std::int32_t followingIndex() const;
    [[nodiscard]] bool hasActive() const;
    void setRemovedRow(std::int32_t row);

    std::optional<CurrentPlace> m_removed; ///< Place of the current entry, once it has been removed.
    std::uint64_t m_edits = 0;
    std::uint64_t m_savedEdits = 0;
    std::int64_t m_changedAt = 0;
};
