#include "core/playlist/TulPlaylist.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <utility>

/// Atomic: workers make lists, too.
std::uint64_t TulPlaylist::nextId() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

std::int64_t TulPlaylist::entryCount() const {
    return static_cast<std::int64_t>(entries.size());
}

std::size_t TulPlaylist::unreadCount() const {
    const auto isUnread = [](const auto& entry) { return entry->tags == TulPlaylistEntry::Tags::unread; };
    return static_cast<std::size_t>(std::ranges::count_if(entries, isUnread));
}

TulPlaylistEntry* TulPlaylist::entryAt(std::int32_t index) const {
    if (index < 0) throw std::out_of_range("playlist index below 0");
    return entries.at(static_cast<std::size_t>(index)).get();
}

TulPlaylistEntry* TulPlaylist::currentEntry() const {
    return entryAt(currentIndex);
}

void TulPlaylist::selectEntry(std::int32_t index) {
    if (index < 0 || index >= entryCount()) return;
    currentEntry()->active = false;
    m_removed.reset();
    currentIndex = index;
    currentEntry()->active = true;
}

TulPlaylistEntry* TulPlaylist::nextEntry() {
    if (entries.empty()) return nullptr;
    selectEntry(followingIndex());
    return currentEntry();
}

TulPlaylistEntry* TulPlaylist::followingEntry() const {
    return entries.empty() ? nullptr : entryAt(followingIndex());
}

std::int32_t TulPlaylist::followingIndex() const {
    const std::int32_t following = m_removed ? currentIndex : currentIndex + 1;
    return following < entryCount() ? following : 0;
}

TulPlaylistEntry* TulPlaylist::previousEntry() {
    if (entries.empty()) return nullptr;
    const auto last = static_cast<std::int32_t>(entryCount() - 1);
    const std::int32_t from = m_removed ? m_removed->row : currentIndex;
    selectEntry(from <= 0 ? last : from - 1);
    return currentEntry();
}

void TulPlaylist::addEntry(const std::string& source) {
    appendEntry(std::make_unique<TulPlaylistEntry>(source));
}

void TulPlaylist::appendEntry(std::unique_ptr<TulPlaylistEntry> entry) {
    entries.push_back(std::move(entry));
    markChanged();
}

std::int64_t TulPlaylist::now() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

void TulPlaylist::markChanged(std::int64_t at) {
    ++m_edits;
    m_changedAt = at;
}

void TulPlaylist::markSaved(const std::string& file, std::uint64_t edits) {
    path = file;
    m_savedEdits = edits;
}

std::unique_ptr<TulPlaylist> TulPlaylist::copyToSave() const {
    auto copy = std::make_unique<TulPlaylist>();
    copy->name = name;
    copy->entries.reserve(entries.size());
    for (const auto& entry : entries) {
        auto& saved = copy->entries.emplace_back(std::make_unique<TulPlaylistEntry>());
        saved->source = entry->source;
        saved->title = entry->title;
        saved->artist = entry->artist;
        saved->album = entry->album;
        saved->length = entry->length;
    }
    return copy;
}
