#pragma once

#include "core/playlist/TulPlaylistEntry.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Rows of a list: ascending, none twice.
using TulRows = std::vector<std::int32_t>;

/// The ordered list of tracks that the player walks through. `currentIndex` is a valid index whenever the
/// list is not empty, and no entry but that one is active.
///
/// An active entry that is removed stays the current one until another is selected: it is played to its end.
/// Meanwhile no entry is active, and `currentIndex` is the one that follows.
class TulPlaylist {
public:
    using Entries = std::vector<std::unique_ptr<TulPlaylistEntry>>;
    /// Where the active entry is: `row` is its own, or that of what follows it if it has been removed. With
    /// no active entry (0) `row` is the current index.
    struct CurrentPlace {
        std::uint64_t entry = 0;
        std::int32_t row = 0;
    };

    Entries entries;
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

    /// The following change many rows at once; the rows must be in the list. The current index follows the
    /// active entry.

    /// Takes entries out, in their order.
    Entries removeEntries(const TulRows& rows);
    /// Puts entries in so that they are at `rows`, as many, afterwards: takes removeEntries back.
    void insertEntries(const TulRows& rows, Entries added);
    /// Moves entries, which keep their order, so that they are at `to` afterwards. The arguments exchanged
    /// take it back.
    void moveEntries(const TulRows& from, const TulRows& to);
    /// Row i gets the entry of row order[i]; the rows behind these stay. Returns the order that takes it
    /// back.
    TulRows reorderEntries(const TulRows& order);

    /// Before which row an entry is to be inserted to be played next.
    [[nodiscard]] std::int32_t rowAfterCurrent() const;
    [[nodiscard]] bool currentIsRemoved() const { return m_removed.has_value(); }
    [[nodiscard]] CurrentPlace currentPlace() const;
    /// After a change has been taken back: what was at `place` before it is there again, unless another entry
    /// has been selected meanwhile.
    void restorePlace(const CurrentPlace& place);

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
    [[nodiscard]] bool hasActive() const;
    void setRemovedRow(std::int32_t row);

    std::optional<CurrentPlace> m_removed; ///< The current entry, when it has been removed.
    std::uint64_t m_edits = 0;
    std::uint64_t m_savedEdits = 0;
    std::int64_t m_changedAt = 0;
};
