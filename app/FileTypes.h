#pragma once

#include <QStringList>

#include <string>

namespace app {

/// File extensions without the dot, as in the file choosers.
const QStringList& audioTypes();
const QStringList& playlistTypes();

/// True for a path with the extension of a playlist, ignoring case. False for addresses.
bool isPlaylist(const std::string& source);
/// The same for audio files.
bool isAudio(const std::string& path);

/// The path of a `file:` address, whose host, if there is one, is this machine; any other as it is.
std::string sourceFromAddress(const std::string& address);

} // namespace app
