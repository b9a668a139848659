#pragma once

#include "core/playlist/TulPlaylist.h"

#include <cstdint>
#include <optional>
#include <random>
#include <unordered_set>
#include <vector>

/// What follows the end of an entry.
enum class TulRepeat {
    off,   ///< the next one, and nothing after the last
    list,  ///< the next one, and the first after the last
    track, ///< the same
};

/// The order in which the entries of a playlist are played: as listed, or shuffled, so that none is played
/// twice before all have been. While shuffled, "previous" goes back through the entries that were played, and
/// "next" forward again.
class TulPlayOrder {
public:
    [[nodiscard]] TulRepeat repeat() const { return m_repeat; }
    void setRepeat(TulRepeat repeat);
    [[nodiscard]] bool isShuffled() const { return m_isShuffled; }
    void setShuffled(bool shuffled);

    /// Select and return the entry that the command "next" or "previous" goes to; null when the list is
    /// empty. In a shuffled list the first that was played has no previous: the current entry stays.
    TulPlaylistEntry* nextEntry(TulPlaylist& list);
    TulPlaylistEntry* previousEntry(TulPlaylist& list);
    /// The entry that follows the end of the current one; null when nothing does. In a shuffled list it stays
    /// the same until it is started or removed.
    [[nodiscard]] TulPlaylistEntry* followingEntry(const TulPlaylist& list);
    /// Notifies that the current entry has been started.
    void started(const TulPlaylist& list);

private:
    void startOver(const TulPlaylist& list);
    [[nodiscard]] std::optional<std::int32_t> shuffledRow(const TulPlaylist& list, bool wraps);
    [[nodiscard]] std::optional<std::int32_t> rowNotIn(const std::unordered_set<std::uint64_t>& played,
                                                       const TulPlaylist& list);

    TulRepeat m_repeat = TulRepeat::list;
    bool m_isShuffled = false;
    bool m_startsRound = false; ///< The last of m_order begins a new round: all had been played before it.
    std::uint64_t m_list = 0;   ///< The id of the shuffled list.
    std::vector<std::uint64_t>
        m_order;          ///< Ids of the entries that were played and of those chosen to follow.
    std::size_t m_at = 0; ///< Index of the current entry in m_order.
    std::unordered_set<std::uint64_t> m_played; ///< Ids played in this round.
    std::mt19937 m_random{std::random_device{}()};
};
