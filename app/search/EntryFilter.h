#pragma once

#include "core/playlist/TulPlaylist.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace app {

/// Which rows of a playlist hold every word of a search, each in the title, the artist, the album or the file
/// name. While there are words it keeps the folded texts of the rows, and finds out by the entries' ids what
/// has been appended, removed or moved. A long list is looked through in several steps, from its start.
///
/// Threads: main thread only.
class EntryFilter {
public:
    /// Folded words; without any, every row matches and nothing is kept.
    void setWords(std::vector<std::string> words);
    const std::vector<std::string>& words() const { return m_words; }
    bool isActive() const { return !m_words.empty(); }

    /// Looks through more rows, for a few milliseconds. Answers whether there are more still.
    bool lookOn(const TulPlaylist& list);
    bool hasSeen(std::int32_t row) const {
        return !isActive() || static_cast<std::size_t>(row) < m_rows.size();
    }

    /// Of the rows that have been looked through, both.
    bool matches(const TulPlaylist& list, std::int32_t row);
    std::size_t count(const TulPlaylist& list);

    /// The texts of this row have changed. Answers whether it matches now and did not before, or the other
    /// way round.
    bool updateRow(const TulPlaylist& list, std::int32_t row);

private:
    struct Row {
        std::uint64_t id; ///< The entry's.
        std::string text;
        bool matches;
    };

    Row made(const TulPlaylistEntry& entry) const;
    bool holdsWords(const std::string& text) const;
    bool followRow(const TulPlaylist& list, std::int32_t row);
    void follow(const TulPlaylist& list);
    void rebuild(const TulPlaylist& list, std::size_t first);

    std::vector<std::string> m_words;
    std::vector<Row> m_rows; ///< Those looked through, in the order of the list when last seen.
};

} // namespace app
