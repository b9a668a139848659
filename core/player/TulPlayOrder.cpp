#include "core/player/TulPlayOrder.h"

#include <algorithm>
#include <utility>

namespace {

std::optional<std::int32_t> rowOf(const TulPlaylist& list, std::uint64_t id) {
    const auto found =
        std::ranges::find_if(list.entries, [id](const auto& entry) { return entry->id == id; });
    if (found == list.entries.end()) return std::nullopt;
    return static_cast<std::int32_t>(found - list.entries.begin());
}

} // namespace

void TulPlayOrder::setShuffled(bool shuffled) {
    if (m_isShuffled == shuffled) return;
    m_isShuffled = shuffled;
    m_list = 0;
}

void TulPlayOrder::setRepeat(TulRepeat repeat) {
    m_repeat = repeat;
    if (std::exchange(m_startsRound, false)) m_order.pop_back();
}

TulPlaylistEntry* TulPlayOrder::nextEntry(TulPlaylist& list) {
    if (!m_isShuffled) return list.nextEntry();
    const auto row = shuffledRow(list, true);
    if (!row) return nullptr;
    list.selectEntry(*row);
    return list.currentEntry();
}

TulPlaylistEntry* TulPlayOrder::previousEntry(TulPlaylist& list) {
    if (!m_isShuffled) return list.previousEntry();
    if (list.entries.empty()) return nullptr;
    if (m_list != list.id) startOver(list);
    while (m_at > 0) {
        if (const auto row = rowOf(list, m_order[--m_at])) {
            list.selectEntry(*row);
            break;
        }
    }
    return list.currentEntry();
}

TulPlaylistEntry* TulPlayOrder::followingEntry(const TulPlaylist& list) {
    if (list.entries.empty()) return nullptr;
    if (m_repeat == TulRepeat::track) return list.currentEntry();
    if (m_isShuffled) {
        const auto row = shuffledRow(list, m_repeat == TulRepeat::list);
        return row ? list.entryAt(*row) : nullptr;
    }
    const bool isLast = list.currentIndex + 1 >= list.entryCount();
    return isLast && m_repeat == TulRepeat::off ? nullptr : list.followingEntry();
}

void TulPlayOrder::started(const TulPlaylist& list) {
    if (!m_isShuffled) return;
    if (m_list != list.id) return startOver(list);
    const std::uint64_t id = list.currentEntry()->id;
    const bool isNext = m_at + 1 < m_order.size() && m_order[m_at + 1] == id;
    if (isNext) ++m_at;
    if (isNext && m_startsRound && m_at + 1 == m_order.size()) m_played.clear();
    if (m_order[m_at] != id) { // the user started another entry than the chosen one
        m_order.resize(++m_at);
        m_order.push_back(id);
    }
    if (m_at + 1 == m_order.size()) m_startsRound = false;
    m_played.insert(id);
}

void TulPlayOrder::startOver(const TulPlaylist& list) {
    m_list = list.id;
    m_order = {list.currentEntry()->id};
    m_at = 0;
    m_startsRound = false;
    m_played = {m_order.front()};
}

/// The row that follows in the shuffled order: the one chosen before, or one chosen now. None when all have
/// been played and the order does not wrap.
std::optional<std::int32_t> TulPlayOrder::shuffledRow(const TulPlaylist& list, bool wraps) {
    if (list.entries.empty()) return std::nullopt;
    if (m_list != list.id) startOver(list);
    for (const std::size_t next = m_at + 1; next < m_order.size();) {
        if (const auto row = rowOf(list, m_order[next])) return row;
        m_order.erase(m_order.begin() + static_cast<std::ptrdiff_t>(next)); // it was removed from the list
    }
    auto row = rowNotIn(m_played, list);
    m_startsRound = !row && wraps;
    if (m_startsRound) row = rowNotIn({}, list).value_or(list.currentIndex);
    if (row) m_order.push_back(list.entryAt(*row)->id);
    return row;
}

/// A random row, uniformly chosen from those that are neither current nor in `played`.
std::optional<std::int32_t> TulPlayOrder::rowNotIn(const std::unordered_set<std::uint64_t>& played,
                                                   const TulPlaylist& list) {
    std::optional<std::int32_t> chosen;
    std::int32_t count = 0;
    for (std::int32_t row = 0; row < list.entryCount(); ++row) {
        if (row == list.currentIndex || played.contains(list.entryAt(row)->id)) continue;
        if (std::uniform_int_distribution<std::int32_t>(0, count++)(m_random) == 0) chosen = row;
    }
    return chosen;
}
