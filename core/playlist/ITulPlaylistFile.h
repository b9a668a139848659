#pragma once

#include "core/playlist/ReadingProgress.h"
#include "core/playlist/TulPlaylist.h"

#include <memory>
#include <string>

/// Reads and writes playlist files of one format. Made for one call.
class ITulPlaylistFile {
public:
    virtual ~ITulPlaylistFile() = default;

    /// Null when the file is rejected.
    virtual std::unique_ptr<TulPlaylist> read(const std::string& path,
                                              const ReadingProgress& progress = {}) = 0;
    /// Replaces the file. A failure leaves the old one and is not reported.
    virtual void write(const TulPlaylist& playlist, const std::string& path) = 0;
};
