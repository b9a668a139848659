#pragma once

#include "core/files/FileStatus.h"
#include "core/playlist/TulPlaylistEntry.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace app {

/// Makes rows of what was named or dropped: paths of files, playlists and folders, and addresses. Tags stay
/// unread.
///
/// Threads: any; it reads folders, and may block.
class SourceSearch {
public:
    enum class Take {
        asTyped,  ///< Each source is an entry, as it is.
        files,    ///< Each path is an entry, without its symbolic links.
        contents, ///< Folders stand for the audio files below them, playlists for their entries.
    };
    struct Found {
        std::vector<std::unique_ptr<TulPlaylistEntry>> entries;
        std::size_t skipped = 0; ///< Files that are not audio.
        /// A playlist that could not be read whole, unless the status is FileStatus::done.
        std::string playlist;
        FileStatus status = FileStatus::done;
    };
    /// Gets what has been found since the last call: the first at once, more every few milliseconds, the last
    /// at the end. False ends the search.
    using Report = std::function<bool(Found found)>;

    /// The files of a folder come in the order of their paths. What is hidden or cannot be read is left out.
    static void run(const std::vector<std::string>& sources, Take take, const Report& report);

    /// The path without symbolic links, as far as it exists.
    static std::string resolved(const std::string& path);

private:
    explicit SourceSearch(const Report& report) : m_report(report) {}

    void take(const std::string& source);
    void takePlaylist(const std::string& path);
    void takeFolder(const std::string& folder);
    void add(std::string source);
    void skip();
    void reportSoon();

    const Report& m_report;
    Found m_found;
    std::chrono::steady_clock::time_point m_reportAt;
    bool m_goesOn = true;
};

} // namespace app
