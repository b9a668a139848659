#pragma once

#include "core/playlist/ReadingProgress.h"

#include <QStringList>

#include <string>
#include <vector>

namespace app {

/// Endings of names, without the dot, as the file choosers list them.
const QStringList& audioTypes();
const QStringList& playlistTypes();

/// Whether this path, by its ending in either case, is a playlist's. An address never is.
bool isPlaylist(const std::string& source);

/// The path of a `file:` address, whose host, if there is one, is this machine; any other as it is.
std::string sourceFromAddress(const std::string& address);

/// The sound files in a folder and in those below it, by their endings, in the order of their paths. What is
/// hidden or cannot be read is left out. `progress` is told how many have been found, of an unknown total
/// (0).
std::vector<std::string> audioFilesIn(const std::string& folder, const ReadingProgress& progress);

} // namespace app
