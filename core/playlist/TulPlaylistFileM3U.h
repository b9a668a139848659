#pragma once

#include "core/playlist/ITulPlaylistFile.h"

/// Reads M3U playlists, plain and extended, as bytes in lines ended by line feeds, with or without a byte
/// order mark.
class TulPlaylistFileM3U : public ITulPlaylistFile {
public:
    /// Null for a file of which nothing can be read. An error later leaves the lines before it. Lines of more
    /// than a megabyte are left out.
    std::unique_ptr<TulPlaylist> read(const std::string& path, FileStatus& status) override;
    /// Does nothing: the format is only read.
    FileStatus write(const TulPlaylist& playlist, const std::string& path) override;
};
