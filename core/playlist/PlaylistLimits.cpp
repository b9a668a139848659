#include "core/playlist/PlaylistLimits.h"

#include <string>

namespace {

/// A year, in seconds.
constexpr double maxLength = 365.0 * 24 * 60 * 60;

/// The size of an allocation, as allocators commonly round it.
constexpr std::size_t allocated(std::size_t bytes) {
    constexpr std::size_t header = 8;
    constexpr std::size_t unit = 16;
    return (bytes + header + unit - 1) / unit * unit;
}

std::size_t bytesBeside(const std::string& text) {
    static const std::size_t insideCapacity = std::string().capacity();
    return text.capacity() > insideCapacity ? allocated(text.capacity() + 1) : 0;
}

} // namespace

bool PlaylistLimits::admit(const TulPlaylistEntry& entry) {
    constexpr std::size_t own = allocated(sizeof(TulPlaylistEntry)) + sizeof(void*);
    m_bytes += own + bytesBeside(entry.source) + bytesBeside(entry.title) + bytesBeside(entry.artist) +
               bytesBeside(entry.album) + bytesBeside(entry.artistAlbum);
    return ++m_entries <= maxEntries && m_bytes <= maxBytes;
}

double knownLength(double seconds) {
    return seconds > 0 && seconds <= maxLength ? seconds : 0; // 0 for NaN, too
}
