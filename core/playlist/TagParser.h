#pragma once

#include "core/playlist/FileDetails.h"
#include "core/playlist/TrackInfo.h"

class TulPlaylistEntry;

/// What TagLib takes from a file. TagLib believes what files state, and can need any amount of memory, stack
/// and time, or crash: to be called by the program that reads tags alone, whose limits bound that.
namespace tags {

/// Nothing for a file that is no track. Throws std::bad_alloc.
std::optional<TrackInfo> parseTrackInfo(const std::string& path);
/// The same for what is shown of one file. Throws std::bad_alloc.
std::optional<FileDetails> parseFileDetails(const std::string& path);
/// Stores the picture in the file `entry.source`, if there is one of at most maxPictureBytes. Throws
/// std::bad_alloc.
void parseCoverArt(TulPlaylistEntry& entry);

} // namespace tags
