#pragma once

#include <optional>
#include <string>

/// The tags of a file. Texts are UTF-8 without zero characters.
struct TrackInfo {
    std::string title;
    std::string artist;
    std::string album;
    double length = 0; ///< Whole seconds; 0 is unknown.
};

/// Reads a local file's tags. None for an address, and for a file that cannot be read.
///
/// Threads: any.
std::optional<TrackInfo> readTrackInfo(const std::string& source);

/// The message in which tulplayer-tags sends the tags. It sends an empty one for none.
std::string packed(const TrackInfo& info);
