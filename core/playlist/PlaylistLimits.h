#pragma once

#include "core/playlist/TulPlaylistEntry.h"

#include <cstddef>

/// Limits for the playlist that a file may produce: a million entries, and 160 MB.
class PlaylistLimits {
public:
    /// Counts an entry that is to be appended; false when that exceeds a limit.
    [[nodiscard]] bool admit(const TulPlaylistEntry& entry);

    static constexpr std::size_t maxEntries = 1'000'000;
    static constexpr std::size_t maxBytes = std::size_t{160} << 20;

private:
    std::size_t m_entries = 0;
    std::size_t m_bytes = 0;
};

/// Validates the length that a file states, in seconds: 0 (unknown) unless it is positive and at most a year.
double knownLength(double seconds);
