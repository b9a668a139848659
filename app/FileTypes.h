#pragma once

#include <QStringList>

#include <string>

namespace app {

/// Endings of names, without the dot, as the file choosers list them.
const QStringList& audioTypes();
const QStringList& playlistTypes();

/// Whether this path, by its ending in either case, is a playlist's. An address never is.
bool isPlaylist(const std::string& source);
/// The same for audio files.
bool isAudio(const std::string& path);

/// The path of a `file:` address, whose host, if there is one, is this machine; any other as it is.
std::string sourceFromAddress(const std::string& address);

} // namespace app
