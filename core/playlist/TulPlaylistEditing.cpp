// The operations of TulPlaylist that change many rows at once.
#include "core/playlist/TulPlaylist.h"

#include <algorithm>
#include <utility>

namespace {

std::int32_t countBelow(const TulRows& rows, std::int32_t row) {
    return static_cast<std::int32_t>(std::ranges::lower_bound(rows, row) - rows.begin());
}

/// The index of the row `place` after `rows` have been inserted; a row inserted at that index comes behind
/// it.
std::int32_t placeAfterInserting(const TulRows& rows, std::int32_t place) {
    for (const std::int32_t row : rows) {
        if (row >= place) break;
        ++place;
    }
    return place;
}

} // namespace

bool TulPlaylist::hasActive() const {
    return currentIndex < entryCount() && currentEntry()->active;
}

void TulPlaylist::setRemovedRow(std::int32_t row) {
    m_removed->row = row;
    currentIndex = row < entryCount() ? row : 0;
}

TulPlaylist::Entries TulPlaylist::removeEntries(const TulRows& rows) {
    if (rows.empty()) return {};
    const CurrentPlace before = currentPlace();
    const bool wasActive = hasActive();
    Entries removed;
    removed.reserve(rows.size());
    auto kept = entries.begin() + rows.front();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto row = entries.begin() + rows[i];
        const auto next = i + 1 < rows.size() ? entries.begin() + rows[i + 1] : entries.end();
        removed.push_back(std::move(*row));
        removed.back()->active = false;
        kept = std::move(row + 1, next, kept);
    }
    entries.erase(kept, entries.end());
    markChanged();

    const std::int32_t row = before.row - countBelow(rows, before.row);
    if (wasActive && std::ranges::binary_search(rows, before.row)) m_removed = before;
    if (m_removed)
        setRemovedRow(row);
    else
        currentIndex = std::clamp(row, 0, std::max(0, static_cast<std::int32_t>(entryCount() - 1)));
    return removed;
}

void TulPlaylist::insertEntries(const TulRows& rows, Entries added) {
    const bool wasActive = hasActive();
    const CurrentPlace before = currentPlace();
    entries.resize(entries.size() + added.size());
    auto end = entries.end(); // end of the gap that is still to be filled
    auto old = entries.end() - std::ssize(added);
    std::int32_t back = -1; // the row at which the removed current entry is inserted again
    for (std::size_t i = added.size(); i-- > 0;) {
        const auto behind = end - (entries.begin() + rows[i] + 1);
        end = std::move_backward(old - behind, old, end);
        old -= behind;
        if (m_removed && added[i]->id == m_removed->entry) back = rows[i];
        added[i]->active = false;
        *--end = std::move(added[i]);
    }
    if (!added.empty()) markChanged();

    // A row that is inserted at the active entry's index moves it down.
    const std::int32_t row = placeAfterInserting(rows, wasActive ? before.row + 1 : before.row);
    if (back >= 0)
        selectEntry(back);
    else if (m_removed)
        setRemovedRow(row);
    else
        currentIndex = wasActive ? row - 1 : row;
}

void TulPlaylist::moveEntries(const TulRows& from, const TulRows& to) {
    insertEntries(to, removeEntries(from));
}

void TulPlaylist::moveEntries(std::int32_t from, std::int32_t to) {
    if (from < 0 || from >= entryCount() || to < 0) return;
    to = std::min(to, static_cast<std::int32_t>(entryCount() - 1));
    if (from != to) moveEntries(TulRows{from}, TulRows{to});
}

TulRows TulPlaylist::reorderEntries(const TulRows& order) {
    const bool wasActive = hasActive();
    TulRows back(order.size());
    Entries moved;
    moved.reserve(order.size());
    for (const std::int32_t row : order) {
        back[static_cast<std::size_t>(row)] = static_cast<std::int32_t>(moved.size());
        moved.push_back(std::move(entries[static_cast<std::size_t>(row)]));
    }
    std::ranges::move(moved, entries.begin());
    markChanged();

    const auto follow = [&back](std::int32_t row) {
        return static_cast<std::size_t>(row) < back.size() ? back[static_cast<std::size_t>(row)] : row;
    };
    if (m_removed) setRemovedRow(follow(m_removed->row));
    if (wasActive) currentIndex = follow(currentIndex);
    return back;
}

std::int32_t TulPlaylist::rowAfterCurrent() const {
    return hasActive() ? currentIndex + 1 : currentPlace().row;
}

TulPlaylist::CurrentPlace TulPlaylist::currentPlace() const {
    if (m_removed) return *m_removed;
    return {hasActive() ? currentEntry()->id : 0, currentIndex};
}

void TulPlaylist::restorePlace(const CurrentPlace& place) {
    if (currentPlace().entry != place.entry) return;
    if (m_removed)
        setRemovedRow(place.row);
    else if (place.entry == 0)
        currentIndex = place.row;
}
