#include "core/playlist/TagReader.h"

#include "core/playlist/resolveEntrySource.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace {

using namespace std::chrono_literals;
using Tags = TulPlaylistEntry::Tags;

/// Limits of the rows that workers have at a time: enough to keep them busy between two deliveries, but few
/// enough that visible rows do not wait long behind them.
constexpr std::size_t minAhead = 16;
constexpr std::size_t maxAhead = 512;
constexpr auto soon = 10ms;
constexpr auto late = 40ms;

/// About the rows of a window: earlier requests have been scrolled past.
constexpr std::size_t maxWanted = 32;
constexpr std::size_t maxWantedReading = 8;

bool isUnread(const TulPlaylistEntry& entry) {
    return entry.tags == Tags::unread || entry.tags == Tags::left;
}

} // namespace

TagReader::TagReader(Workers& workers, Changed changed)
    : m_workers(workers), m_changed(std::move(changed)), m_ahead(minAhead) {}

void TagReader::follow(TulPlaylist& playlist, std::size_t unread) {
    leaveList();
    m_playlist = &playlist;
    m_reading.clear();
    m_wanted.clear();
    m_preparing = {};
    m_next = 0;
    m_unread = unread;
    m_done = m_counting = m_wantedReading = 0;
    m_stopped = false;
    m_ahead = minAhead;
}

/// Marks the rows that are being read as unread: their results are dropped.
void TagReader::leaveList() {
    const auto isFound = [this](const auto& each) { return isAt(each.second.row, each.first); };
    if (!std::ranges::all_of(m_reading, isFound)) findRows();
    for (const auto& [id, reading] : m_reading)
        m_playlist->entryAt(reading.row)->tags = reading.counts ? Tags::unread : Tags::left;
}

void TagReader::rowsInserted(const TulRows& rows) {
    for (const std::int32_t row : rows)
        count(*m_playlist->entryAt(row));
    readRest();
}

void TagReader::rowsRemoved(const TulPlaylist::Entries& removed) {
    for (const auto& entry : removed) {
        cancelReading(*entry);
        if (entry->tags == Tags::unread && m_unread > 0) --m_unread;
        if (entry->id == m_preparing.id) m_preparing = {};
    }
    readRest();
}

void TagReader::count(TulPlaylistEntry& entry) {
    if (entry.tags != Tags::unread) return;
    if (m_stopped)
        entry.tags = Tags::left;
    else
        ++m_unread;
}

/// Drops the result of an entry that leaves the list.
void TagReader::cancelReading(TulPlaylistEntry& entry) {
    if (entry.tags != Tags::reading) return;
    entry.tags = Tags::left;
    const auto reading = m_reading.find(entry.id);
    if (reading == m_reading.end()) return;
    if (reading->second.counts) {
        entry.tags = Tags::unread;
        --m_counting;
        ++m_unread;
    }
    if (reading->second.wanted) --m_wantedReading;
    m_reading.erase(reading);
}

void TagReader::want(std::int32_t row) {
    const TulPlaylistEntry& entry = *m_playlist->entryAt(row);
    if (!isUnread(entry) || std::ranges::find(m_wanted, entry.id, &Wanted::id) != m_wanted.end()) return;
    m_wanted.push_front({entry.id, row});
    if (m_wanted.size() > maxWanted) m_wanted.pop_back();
    readWanted();
}

void TagReader::prepare(const TulPlaylistEntry& entry, std::int32_t row) {
    const std::uint64_t id = entry.id;
    m_preparing = {.id = id,
                   .tags = entry.tags != Tags::read,
                   .picture = entry.coverArtSize == 0 && !isAddress(entry.source)};
    // The urgent lane is last in, first out: post the tags, which come first, last.
    if (m_preparing.picture) {
        m_workers.run(Workers::Lane::urgent, [this, id, source = entry.source](const auto& reply) {
            const auto found = std::make_shared<TulPlaylistEntry>();
            found->source = source;
            found->loadCoverArt();
            reply.post([this, id, found] { takePicture(id, *found); });
        });
    }
    if (entry.tags == Tags::reading)
        start(entry, Workers::Lane::urgent); // read it again: the first reading may be far back in the queue
    if (isUnread(entry)) read(row, Workers::Lane::urgent, false);
}

void TagReader::stop() {
    for (const auto& entry : m_playlist->entries)
        if (entry->tags == Tags::unread) entry->tags = Tags::left;
    for (auto& [id, reading] : m_reading)
        reading.counts = false;
    m_unread = m_done = m_counting = 0;
    m_stopped = true;
}

TagReader::Progress TagReader::progress() const {
    return {m_done, m_done + m_unread + m_counting};
}

void TagReader::readRest() {
    while (m_unread > 0 && m_reading.size() < m_ahead)
        if (const std::int32_t row = nextUnread(); row >= 0) read(row, Workers::Lane::bulk, false);
    if (m_unread + m_counting == 0) m_done = 0;
}

/// The next row to read; -1 when there is none.
std::int32_t TagReader::nextUnread() {
    const auto& entries = m_playlist->entries;
    const auto isNext = [](const auto& entry) { return entry->tags == Tags::unread; };
    const auto from = entries.begin() + std::min<std::ptrdiff_t>(m_next, std::ssize(entries));
    auto found = std::find_if(from, entries.end(), isNext);
    if (found == entries.end()) found = std::find_if(entries.begin(), from, isNext); // it was moved up
    if (found == entries.end() || !isNext(*found)) {
        m_unread = 0; // the rest has been removed
        return -1;
    }
    m_next = static_cast<std::int32_t>(found - entries.begin()) + 1;
    return m_next - 1;
}

void TagReader::readWanted() {
    while (!m_wanted.empty() && m_wantedReading < maxWantedReading) {
        const Wanted wanted = m_wanted.front();
        m_wanted.pop_front();
        // A row that has moved meanwhile is requested again when it is visible there.
        if (!isAt(wanted.row, wanted.id) || !isUnread(*m_playlist->entryAt(wanted.row))) continue;
        read(wanted.row, Workers::Lane::urgent, true);
    }
}

void TagReader::read(std::int32_t row, Workers::Lane lane, bool wanted) {
    TulPlaylistEntry& entry = *m_playlist->entryAt(row);
    const bool counts = entry.tags == Tags::unread && m_unread > 0; // not all rows are counted as unread
    if (counts) {
        --m_unread;
        ++m_counting;
    }
    if (wanted) ++m_wantedReading;
    m_reading[entry.id] = {.row = row, .counts = counts, .wanted = wanted};
    entry.tags = Tags::reading;
    start(entry, lane);
}

void TagReader::start(const TulPlaylistEntry& entry, Workers::Lane lane) {
    m_workers.run(lane, [this, id = entry.id, source = entry.source](const auto& reply) {
        reply.post([this, id, info = readTrackInfo(source)] { take(id, info); });
    });
}

void TagReader::take(std::uint64_t id, const std::optional<TrackInfo>& info) {
    const auto reading = m_reading.find(id);
    if (reading != m_reading.end() && !isAt(reading->second.row, id)) findRows();
    fill(id, info);
    adaptAhead();
    readWanted();
    readRest();
}

/// Does nothing when the row was removed, belongs to another list, or has been filled before.
void TagReader::fill(std::uint64_t id, const std::optional<TrackInfo>& info) {
    const auto reading = m_reading.find(id);
    if (reading == m_reading.end()) return;
    const auto [row, counts, wanted] = reading->second;
    m_reading.erase(reading);
    if (counts) {
        --m_counting;
        ++m_done;
    }
    if (wanted) --m_wantedReading;
    if (id == m_preparing.id) m_preparing.tags = false;
    TulPlaylistEntry& entry = *m_playlist->entryAt(row);
    entry.takeTrackInfo(info, true);
    m_changed(entry, row);
}

void TagReader::takePicture(std::uint64_t id, TulPlaylistEntry& found) {
    if (id != m_preparing.id) return; // another entry plays by now
    m_preparing.picture = false;
    if (m_playlist->entryCount() == 0 || !isAt(m_playlist->currentIndex, id)) return;
    TulPlaylistEntry& entry = *m_playlist->currentEntry();
    entry.coverArt = std::move(found.coverArt);
    entry.coverArtSize = found.coverArtSize;
    m_changed(entry, m_playlist->currentIndex);
}

bool TagReader::isAt(std::int32_t row, std::uint64_t id) const {
    return row < m_playlist->entryCount() && m_playlist->entryAt(row)->id == id;
}

/// Updates the rows in m_reading after rows have been moved or removed.
void TagReader::findRows() {
    for (auto& [id, reading] : m_reading)
        reading.row = -1;
    for (std::int32_t row = 0; row < m_playlist->entryCount(); ++row) {
        const TulPlaylistEntry& entry = *m_playlist->entryAt(row);
        if (entry.tags != Tags::reading) continue;
        if (const auto reading = m_reading.find(entry.id); reading != m_reading.end())
            reading->second.row = row;
    }
    std::erase_if(m_reading, [this](const auto& each) {
        const Reading& reading = each.second;
        if (reading.row >= 0) return false;
        if (reading.counts) --m_counting;
        if (reading.wanted) --m_wantedReading;
        return true;
    });
}

/// Gives the workers more rows at a time when they read fast, fewer when they read slowly.
void TagReader::adaptAhead() {
    if (++m_taken < m_ahead) return;
    const auto now = std::chrono::steady_clock::now();
    const auto took = now - std::exchange(m_takenSince, now);
    m_taken = 0;
    if (took < soon) m_ahead = std::min(2 * m_ahead, maxAhead);
    if (took > late) m_ahead = std::max(m_ahead / 2, minAhead);
}
