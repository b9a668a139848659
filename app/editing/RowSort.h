#pragma once

#include "core/playlist/TulPlaylist.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace app {

enum class SortKey { title, artistAndAlbum, fileName };

/// The texts that decide where a list's rows go, copied so that a worker can sort them.
class RowSort {
public:
    /// Main thread.
    RowSort(const TulPlaylist& list, SortKey key);

    /// The order for TulPlaylist::reorderEntries: by the user's language, numbers in texts by their value;
    /// rows that are alike stay in their order. Any thread.
    [[nodiscard]] TulRows order() const;

private:
    static constexpr std::size_t textsPerRow = 3; ///< The first that differs decides.
    using Ends = std::array<std::size_t, textsPerRow>;

    void add(const std::string& text, std::size_t& end);

    std::string m_bytes; ///< All texts, one behind the other.
    std::vector<Ends> m_ends;
};

} // namespace app
