#pragma once

#include "core/playlist/ITulPlaylistFile.h"

#include <memory>
#include <string>

/// Chooses the format of a playlist file by its extension.
class TulPlaylistFileFactory {
public:
    /// Never null: the native format for unknown extensions.
    [[nodiscard]] std::unique_ptr<ITulPlaylistFile> createPlaylistFile(const std::string& path) const;
};
