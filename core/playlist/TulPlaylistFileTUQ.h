#pragma once

#include "core/playlist/ITulPlaylistFile.h"

/// The native playlist format: one JSON document. The bytes of strings are written unchanged, valid UTF-8 or
/// not.
class TulPlaylistFileTUQ : public ITulPlaylistFile {
public:
    /// Null for a file that is unreadable, not valid JSON, lacks a required member, or has a known member of
    /// another type. A text file with another extension that does not begin like JSON is read as M3U.
    std::unique_ptr<TulPlaylist> read(const std::string& path, FileStatus& status) override;
    FileStatus write(const TulPlaylist& playlist, const std::string& path) override;
};
