#pragma once

#include "core/playlist/ITulPlaylistFile.h"

/// The native playlist format: one JSON document. Strings are written as the bytes they are, valid UTF-8 or
/// not.
class TulPlaylistFileTUQ : public ITulPlaylistFile {
public:
    /// Null for what is not such a document: unreadable, invalid JSON, a required member missing, or a known
    /// member of another type. Text in a file of another extension that does not begin as
    /// JSON does is read as M3U.
    std::unique_ptr<TulPlaylist> read(const std::string& path, FileStatus& status) override;
    FileStatus write(const TulPlaylist& playlist, const std::string& path) override;
};
