#pragma once

#include <optional>
#include <string>

/// What a file says of the track in it. Texts are UTF-8, and hold no zero character.
struct TrackInfo {
    std::string title;
    std::string artist;
    std::string album;
    double length = 0; ///< Whole seconds; 0 is unknown.
};

/// Reads a local file's tags. Nothing for an address, and for a file that cannot be read.
///
/// Threads: any.
std::optional<TrackInfo> readTrackInfo(const std::string& source);

/// As the program that reads tags sends it. Nothing is sent as an empty message.
std::string packed(const TrackInfo& info);
