#pragma once

#include "core/playlist/ITulPlaylistFile.h"

/// Reads M3U playlists, plain and extended, as bytes in lines ended by line feeds. At most a million entries
/// are taken.
class TulPlaylistFileM3U : public ITulPlaylistFile {
public:
    /// Never null: a file that cannot be read gives an empty playlist of the file's name.
    std::unique_ptr<TulPlaylist> read(const std::string& path) override;
    /// Does nothing: the format is only read.
    FileStatus write(const TulPlaylist& playlist, const std::string& path) override;
};
