#pragma once

#include "core/playlist/FileDetails.h"
#include "core/playlist/TrackInfo.h"

class TulPlaylistEntry;

/// Reads files through TagLib. TagLib trusts what files state: a malicious one can make it use any amount of
/// memory and time, or crash. Only tulplayer-tags calls these functions, within its limits.
namespace tags {

/// None for a file that is not audio. Throws std::bad_alloc.
std::optional<TrackInfo> parseTrackInfo(const std::string& path);
/// None for a file that is not audio. Throws std::bad_alloc.
std::optional<FileDetails> parseFileDetails(const std::string& path);
/// Stores the embedded picture of the file `entry.source` in `entry`, if it has at most maxPictureBytes.
/// Throws std::bad_alloc.
void parseCoverArt(TulPlaylistEntry& entry);

} // namespace tags
