#pragma once

#include "core/files/FileStatus.h"
#include "core/playlist/TulPlaylist.h"

#include <memory>
#include <string>

/// Reads and writes playlist files of one format. Made for one call, on any thread.
class ITulPlaylistFile {
public:
    virtual ~ITulPlaylistFile() = default;

    /// The list as the file gives it: no file is asked for the tags that are missing in it, and no entry has
    /// a title that is not written there, but for addresses. Null when the file is rejected. `status` says
    /// why, or what is missing: FileStatus::cut and FileStatus::incomplete come with a list.
    virtual std::unique_ptr<TulPlaylist> read(const std::string& path, FileStatus& status) = 0;
    /// Replaces the file. Anything but FileStatus::done and FileStatus::postponed leaves the old one.
    virtual FileStatus write(const TulPlaylist& playlist, const std::string& path) = 0;
};
