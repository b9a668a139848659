#include "core/playlist/TuqVisitor.h"

#include "core/playlist/resolveEntrySource.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

enum Member : std::uint8_t { name, start, source, title, artist, album, length, smart, unknown };

constexpr std::array<std::string_view, unknown> memberNames = {"name",   "start", "source", "title",
                                                               "artist", "album", "length", "smart"};

Member memberOf(std::string_view text) {
    return static_cast<Member>(std::ranges::find(memberNames, text) - memberNames.begin());
}

constexpr bool has(unsigned members, Member member) {
    return (members >> member & 1U) != 0;
}

/// Adds a member; true when it was there already.
template <typename Members> bool addTo(Members& members, Member member) {
    const bool had = has(members, member);
    members = static_cast<Members>(members | 1U << member);
    return had;
}

bool take(const json::Value& value, std::string& field) {
    if (value.string) field = *value.string;
    return value.string.has_value();
}

} // namespace

bool TuqVisitor::rootMember(std::string_view memberName, const json::Value& value) {
    const Member member = memberOf(memberName);
    const bool isKnown = member == name || member == start || member == artist || member == album;
    if (!isKnown || addTo(m_rootMembers, member)) return true;
    if (member == name) return take(value, m_playlist->name);
    if (member == artist) return take(value, m_artist);
    if (member == album) return take(value, m_album);
    m_start = value.integer.value_or(-1);
    return value.integer.has_value();
}

bool TuqVisitor::beginEntry() {
    m_entry = std::make_unique<TulPlaylistEntry>();
    m_entryMembers = 0;
    m_isValid = true;
    return true;
}

/// Validity is checked at the entry's end, because entries beyond the limit are not.
bool TuqVisitor::entryMember(std::string_view memberName, const json::Value& value) {
    const Member member = memberOf(memberName);
    if (member == unknown || addTo(m_entryMembers, member)) return true;
    if (member == source) m_isValid &= take(value, m_entry->source);
    if (member == title) m_isValid &= take(value, m_entry->title);
    if (member == artist) m_isValid &= take(value, m_entry->artist);
    if (member == album) m_isValid &= take(value, m_entry->album);
    if (member == length) {
        m_isValid &= value.number.has_value();
        m_entry->length = knownLength(value.number.value_or(0));
    }
    return true;
}

bool TuqVisitor::endEntry() {
    if (has(m_entryMembers, smart)) return true;
    if (!m_isValid || !has(m_entryMembers, source)) return false;
    m_entry->source = resolveEntrySource(m_entry->source, m_folder);
    m_isCut = m_isCut || !m_limits.admit(*m_entry);
    if (m_isCut) return true;
    m_playlist->appendEntry(std::move(m_entry));
    m_given.push_back(m_entryMembers);
    return true;
}

std::unique_ptr<TulPlaylist> TuqVisitor::finish() {
    if (!has(m_rootMembers, name)) return nullptr;
    for (std::size_t i = 0; i < m_given.size(); ++i)
        finishEntry(*m_playlist->entries[i], m_given[i]);
    m_playlist->selectEntry(m_start);
    return std::move(m_playlist);
}

/// Completes an entry when the root has been read: its artist and album may follow the entries.
void TuqVisitor::finishEntry(TulPlaylistEntry& entry, Members given) const {
    if (!has(given, artist)) entry.artist = m_artist;
    if (!has(given, album)) entry.album = m_album;
    if (!entry.artist.empty() && !entry.album.empty()) entry.artistAlbum = entry.artist + " - " + entry.album;
    entry.settleWithoutFile();
}
