#include "app/search/EntryFilter.h"

#include "app/search/FoldedText.h"
#include "core/playlist/resolveEntrySource.h"

#include <algorithm>
#include <chrono>
#include <unordered_map>
#include <utility>

namespace app {
namespace {

using namespace std::chrono_literals;

/// The event loop waits so long.
constexpr auto step = 8ms;
constexpr std::size_t rowsBetweenClocks = 64;

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

bool EntryFilter::lookOn(const TulPlaylist& list) {
    if (!isActive()) return false;
    follow(list);
    m_rows.reserve(list.entries.size());
    const auto until = std::chrono::steady_clock::now() + step;
    while (m_rows.size() < list.entries.size()) {
        m_rows.push_back(made(*list.entries[m_rows.size()]));
        const bool asksClock = m_rows.size() % rowsBetweenClocks == 0;
        if (asksClock && std::chrono::steady_clock::now() > until) break;
    }
    return m_rows.size() < list.entries.size();
}

bool EntryFilter::matches(const TulPlaylist& list, std::int32_t row) {
    if (!isActive()) return true;
    return followRow(list, row) && m_rows[static_cast<std::size_t>(row)].matches;
}

std::size_t EntryFilter::count(const TulPlaylist& list) {
    if (!isActive()) return list.entries.size();
    follow(list);
    return static_cast<std::size_t>(std::ranges::count(m_rows, true, &Row::matches));
}

bool EntryFilter::updateRow(const TulPlaylist& list, std::int32_t row) {
    if (!isActive() || !followRow(list, row)) return false;
    const auto index = static_cast<std::size_t>(row);
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

/// Answers whether the row has been looked through.
bool EntryFilter::followRow(const TulPlaylist& list, std::int32_t row) {
    const auto index = static_cast<std::size_t>(row);
    const bool isAsBefore = m_rows.size() <= list.entries.size() &&
                            (!hasSeen(row) || m_rows[index].id == list.entries[index]->id);
    if (!isAsBefore) follow(list);
    return hasSeen(row);
}

void EntryFilter::follow(const TulPlaylist& list) {
    const auto differing = std::ranges::mismatch(
        m_rows, list.entries, [](const Row& row, const auto& entry) { return row.id == entry->id; });
    if (differing.in1 == m_rows.end()) return;
    rebuild(list, static_cast<std::size_t>(differing.in1 - m_rows.begin()));
}

/// Those before `first` are as they were. The others may have moved.
void EntryFilter::rebuild(const TulPlaylist& list, std::size_t first) {
    const std::size_t end = std::min(m_rows.size(), list.entries.size());
    std::unordered_map<std::uint64_t, Row> former;
    for (auto row = first; row < m_rows.size(); ++row)
        former.emplace(m_rows[row].id, std::move(m_rows[row]));
    m_rows.erase(m_rows.begin() + static_cast<std::ptrdiff_t>(first), m_rows.end());
    for (auto row = first; row < end; ++row) {
        const TulPlaylistEntry& entry = *list.entries[row];
        const auto known = former.find(entry.id);
        m_rows.push_back(known == former.end() ? made(entry) : std::move(known->second));
    }
}

} // namespace app
