#pragma once

#include "core/playlist/TulPlaylistEntry.h"

#include <cstddef>

/// What a playlist file may make of itself: a million entries, and as many as some memory holds.
class PlaylistLimits {
public:
    /// Counts an entry that is to be appended; false when there is no room for it.
    [[nodiscard]] bool admit(const TulPlaylistEntry& entry);

    static constexpr std::size_t maxEntries = 1'000'000;
    static constexpr std::size_t maxBytes = std::size_t{160} << 20;

private:
    std::size_t m_entries = 0;
    std::size_t m_bytes = 0;
};

/// A track's length as a file states it, in seconds: 0, unknown, when no track has such a length.
double knownLength(double seconds);
