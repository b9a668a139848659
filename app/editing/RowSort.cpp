#include "app/editing/RowSort.h"

#include <QCollator>

#include <algorithm>
#include <numeric>

namespace app {
namespace {

/// Room for what a row's texts usually take.
constexpr std::size_t usualBytes = 96;

std::string fileNameOf(const std::string& source) {
    return source.substr(source.find_last_of('/') + 1);
}

QCollator collator() {
    // Where no language is set, texts would be compared byte by byte.
    const QLocale locale;
    QCollator made(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
    made.setNumericMode(true);
    made.setCaseSensitivity(Qt::CaseInsensitive);
    return made;
}

} // namespace

RowSort::RowSort(const TulPlaylist& list, SortKey key) {
    m_ends.resize(list.entries.size());
    m_bytes.reserve(list.entries.size() * usualBytes);
    for (std::size_t row = 0; row < m_ends.size(); ++row) {
        const TulPlaylistEntry& entry = *list.entries[row];
        Ends& ends = m_ends[row];
        const bool byArtist = key == SortKey::artistAndAlbum;
        add(byArtist                ? entry.artist
            : key == SortKey::title ? entry.shownTitle()
                                    : fileNameOf(entry.source),
            ends[0]);
        add(byArtist ? entry.album : std::string(), ends[1]);
        add(entry.source, ends[2]); // tracks of an album usually begin with their number
    }
}

void RowSort::add(const std::string& text, std::size_t& end) {
    m_bytes += text;
    end = m_bytes.size();
}

TulRows RowSort::order() const {
    const QCollator collate = collator();
    std::vector<QCollatorSortKey> keys;
    keys.reserve(m_ends.size() * textsPerRow);
    std::size_t begin = 0;
    for (const Ends& ends : m_ends)
        for (const std::size_t end : ends) {
            const auto length = static_cast<qsizetype>(end - begin);
            keys.push_back(collate.sortKey(QString::fromUtf8(m_bytes.data() + begin, length)));
            begin = end;
        }

    TulRows order(m_ends.size());
    std::iota(order.begin(), order.end(), 0);
    const auto comesBefore = [&keys](std::int32_t left, std::int32_t right) {
        const QCollatorSortKey* l = &keys[static_cast<std::size_t>(left) * textsPerRow];
        const QCollatorSortKey* r = &keys[static_cast<std::size_t>(right) * textsPerRow];
        for (std::size_t i = 0; i < textsPerRow; ++i)
            if (const int compared = l[i].compare(r[i]); compared != 0) return compared < 0;
        return false;
    };
    std::ranges::stable_sort(order, comesBefore);
    return order;
}

} // namespace app
