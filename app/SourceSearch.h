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

/// Makes entries for files, playlists, folders and addresses. Tags stay unread.
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
    /// Receives what was found since the last call: the first result at once, more every few milliseconds,
    /// the rest at the end. Returning false ends the search.
    using Report = std::function<bool(Found found)>;

    /// Files of a folder are ordered by path. Hidden and unreadable files are skipped.
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
