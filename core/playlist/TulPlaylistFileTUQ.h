#pragma once

#include "core/playlist/ITulPlaylistFile.h"

#include <rapidjson/fwd.h>

/// The native playlist format: one JSON document. Strings are written as the bytes they are, valid UTF-8 or
/// not.
class TulPlaylistFileTUQ : public ITulPlaylistFile {
public:
    /// Null for what is not such a document: unreadable, invalid JSON, a required member missing, or a known
    /// member of another type.
    std::unique_ptr<TulPlaylist> read(const std::string& path) override;
    FileStatus write(const TulPlaylist& playlist, const std::string& path) override;

private:
    /// Null when the element breaks the rules.
    static std::unique_ptr<TulPlaylistEntry>
    readEntry(const rapidjson::Value& element, const rapidjson::Value& root, const std::string& folder);
};
