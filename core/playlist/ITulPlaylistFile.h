#pragma once

#include "core/files/FileStatus.h"
#include "core/playlist/TulPlaylist.h"

#include <memory>
#include <string>

/// Reads and writes playlist files of one format. An object is used for one call, on any thread.
class ITulPlaylistFile {
public:
    virtual ~ITulPlaylistFile() = default;

    /// Reads the list. Missing texts of local files stay empty; no audio file is opened for them. Null when
    /// the file is rejected; `status` says why. FileStatus::cut and FileStatus::incomplete come with a list.
    virtual std::unique_ptr<TulPlaylist> read(const std::string& path, FileStatus& status) = 0;
    /// Replaces the file. Any status but FileStatus::done and FileStatus::postponed leaves the old one as it
    /// was.
    virtual FileStatus write(const TulPlaylist& playlist, const std::string& path) = 0;
};
