#pragma once

#include "core/playlist/TulPlaylist.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace app {

/// Which rows of a playlist hold every word of a search, each in the title, the artist, the album or the file
/// name. While there are words it keeps the folded texts of all rows, and finds out by the entries' ids what
/// has been appended, removed or moved.
///
/// Threads: main thread only.
class EntryFilter {
public:
    /// Folded words; without any, every row matches and nothing is kept.
    void setWords(std::vector<std::string> words);
    const std::vector<std::string>& words() const { return m_words; }
    bool isActive() const { return !m_words.empty(); }

    bool matches(const TulPlaylist& list, std::int32_t row);
    /// How many rows match.
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
    void follow(const TulPlaylist& list);
    void followRow(const TulPlaylist& list, std::size_t row);
    void rebuild(const TulPlaylist& list, std::size_t first);

    std::vector<std::string> m_words;
    std::vector<Row> m_rows; ///< In the order of the list when last seen.
};

} // namespace app
