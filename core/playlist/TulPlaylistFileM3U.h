#pragma once

#include "core/playlist/ITulPlaylistFile.h"

/// Reads M3U playlists, plain and extended: bytes in lines ended by line feeds, with or without a byte order
/// mark.
class TulPlaylistFileM3U : public ITulPlaylistFile {
public:
    /// Null for a file that cannot be read. After a later read error the list holds the lines before it.
    /// Lines of more than a megabyte are skipped.
    std::unique_ptr<TulPlaylist> read(const std::string& path, FileStatus& status) override;
    /// Not supported: writes nothing.
    FileStatus write(const TulPlaylist& playlist, const std::string& path) override;
};
