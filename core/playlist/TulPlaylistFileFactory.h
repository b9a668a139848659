#pragma once

#include "core/playlist/ITulPlaylistFile.h"

#include <memory>
#include <string>

/// Chooses the reader and writer of a playlist file by the path's extension.
class TulPlaylistFileFactory {
public:
    /// Never null: what is not known is taken for the native format.
    [[nodiscard]] std::unique_ptr<ITulPlaylistFile> createPlaylistFile(const std::string& path) const;
};
