#include "app/search/EntryFilter.h"

#include "app/search/FoldedText.h"
#include "core/playlist/resolveEntrySource.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace app {
namespace {

/// No word reaches over it.
constexpr char separator = '\n';

/// The last part of a path; an address as a whole, whose host is what people know of it.
std::string fileName(const std::string& source) {
    return isAddress(source) ? source : source.substr(source.rfind('/') + 1);
}

std::string textOf(const TulPlaylistEntry& entry) {
    const std::string name = fileName(entry.source);
    const std::string* const parts[] = {&entry.title, &entry.artist, &entry.album, &name};
    std::size_t size = 0;
    for (const std::string* part : parts)
        size += part->size() + 1;
    std::string text;
    text.reserve(size); // folded, it is seldom longer
    for (const std::string* part : parts) {
        appendFolded(text, *part);
        text += separator;
    }
    return text;
}

} // namespace

void EntryFilter::setWords(std::vector<std::string> words) {
    if (words.empty()) m_rows = {};
    const auto isHeld = [&](const std::string& former) {
        return std::ranges::any_of(words,
                                   [&](const auto& word) { return word.find(former) != std::string::npos; });
    };
    const bool narrows = std::ranges::all_of(m_words, isHeld);
    m_words = std::move(words);
    for (Row& row : m_rows)
        row.matches = (row.matches || !narrows) && holdsWords(row.text);
}

bool EntryFilter::matches(const TulPlaylist& list, std::int32_t row) {
    if (!isActive()) return true;
    const auto index = static_cast<std::size_t>(row);
    followRow(list, index);
    return m_rows[index].matches;
}

std::size_t EntryFilter::count(const TulPlaylist& list) {
    if (!isActive()) return list.entries.size();
    follow(list);
    return static_cast<std::size_t>(std::ranges::count(m_rows, true, &Row::matches));
}

bool EntryFilter::updateRow(const TulPlaylist& list, std::int32_t row) {
    if (!isActive()) return false;
    const auto index = static_cast<std::size_t>(row);
    followRow(list, index);
    const bool matched = m_rows[index].matches;
    m_rows[index] = made(*list.entries[index]);
    return m_rows[index].matches != matched;
}

EntryFilter::Row EntryFilter::made(const TulPlaylistEntry& entry) const {
    Row row{.id = entry.id, .text = textOf(entry), .matches = false};
    row.matches = holdsWords(row.text);
    return row;
}

bool EntryFilter::holdsWords(const std::string& text) const {
    return std::ranges::all_of(m_words,
                               [&](const std::string& word) { return text.find(word) != std::string::npos; });
}

void EntryFilter::follow(const TulPlaylist& list) {
    const auto& entries = list.entries;
    const auto differing = std::ranges::mismatch(
        m_rows, entries, [](const Row& row, const auto& entry) { return row.id == entry->id; });
    if (differing.in1 == m_rows.end() && differing.in2 == entries.end()) return;
    rebuild(list, static_cast<std::size_t>(differing.in1 - m_rows.begin()));
}

void EntryFilter::followRow(const TulPlaylist& list, std::size_t row) {
    const bool isKnown = m_rows.size() == list.entries.size() && m_rows[row].id == list.entries[row]->id;
    if (!isKnown) follow(list);
}

/// Those before `first` are as they were. The others may have moved.
void EntryFilter::rebuild(const TulPlaylist& list, std::size_t first) {
    std::unordered_map<std::uint64_t, Row> former;
    for (auto row = first; row < m_rows.size(); ++row)
        former.emplace(m_rows[row].id, std::move(m_rows[row]));
    m_rows.erase(m_rows.begin() + static_cast<std::ptrdiff_t>(first), m_rows.end());
    m_rows.reserve(list.entries.size());
    for (auto row = first; row < list.entries.size(); ++row) {
        const TulPlaylistEntry& entry = *list.entries[row];
        const auto known = former.find(entry.id);
        m_rows.push_back(known == former.end() ? made(entry) : std::move(known->second));
    }
}

} // namespace app
