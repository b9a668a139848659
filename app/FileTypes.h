#pragma once

#include "core/playlist/ReadingProgress.h"

#include <QStringList>

#include <string>
#include <vector>

class QUrl;

namespace app {

/// Endings of names, without the dot, as the file choosers list them.
const QStringList& audioTypes();
const QStringList& playlistTypes();

/// Whether this path, by its ending in either case, is a playlist's. An address never is.
bool isPlaylist(const std::string& source);

/// What an entry or a list is opened by: the path of a local file, else the address as it is. A path's bytes
/// need be no text; the link to it holds them all.
std::string sourceFromUrl(const QUrl& url);

/// The sound files in a folder and in those below it, by their endings, in the order of their paths. What is
/// hidden or cannot be read is left out. `progress` is told how many have been found, of an unknown total
/// (0).
std::vector<std::string> audioFilesIn(const std::string& folder, const ReadingProgress& progress);

} // namespace app
