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

/// Which entry of the playlist is played after which: as they stand, or shuffled, so that none is played
/// twice before all have been. Then "previous" goes back through what has been played, and "next" forward
/// again.
class TulPlayOrder {
public:
    [[nodiscard]] TulRepeat repeat() const { return m_repeat; }
    void setRepeat(TulRepeat repeat);
    [[nodiscard]] bool isShuffled() const { return m_isShuffled; }
    void setShuffled(bool shuffled);

    /// Select what the commands go to; null when the list is empty. Before the first that was shuffled there
    /// is none: the current entry.
    TulPlaylistEntry* nextEntry(TulPlaylist& list);
    TulPlaylistEntry* previousEntry(TulPlaylist& list);
    /// What follows the current entry by itself; null when nothing does. The same until that one is started
    /// or leaves the list.
    [[nodiscard]] TulPlaylistEntry* followingEntry(const TulPlaylist& list);
    /// The current entry has been started.
    void started(const TulPlaylist& list);

private:
    void startOver(const TulPlaylist& list);
    [[nodiscard]] std::optional<std::int32_t> shuffledRow(const TulPlaylist& list, bool wraps);
    [[nodiscard]] std::optional<std::int32_t> rowNotIn(const std::unordered_set<std::uint64_t>& played,
                                                       const TulPlaylist& list);

    TulRepeat m_repeat = TulRepeat::list;
    bool m_isShuffled = false;
    bool m_startsRound = false; ///< The last of m_order has not been started, and all had been before it.
    std::uint64_t m_list = 0;   ///< The id of the one that was shuffled.
    std::vector<std::uint64_t> m_order;         ///< Ids of what was played, and of what is to follow.
    std::size_t m_at = 0;                       ///< Of the current entry in m_order.
    std::unordered_set<std::uint64_t> m_played; ///< Since all had been.
    std::mt19937 m_random{std::random_device{}()};
};
