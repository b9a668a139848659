#include "app/SourceSearch.h"

#include "app/FileTypes.h"
#include "core/playlist/TulPlaylistFileFactory.h"
#include "core/playlist/resolveEntrySource.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

namespace app {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds reportEvery{20};

bool isFolder(const std::string& path) {
    std::error_code unknown;
    return fs::is_directory(path, unknown);
}

/// What a folder holds: folders end in a slash, so that sorting puts their files where their paths would be.
std::vector<std::string> contentsOf(const std::string& folder) {
    std::vector<std::string> contents;
    std::error_code failed;
    for (fs::directory_iterator entry(folder, failed); !failed && entry != fs::end(entry);
         entry.increment(failed)) {
        const std::string path = entry->path().string();
        if (entry->path().filename().string().starts_with('.')) continue;
        std::error_code unknown;
        const bool isLink = entry->is_symlink(unknown);
        if (!isLink && entry->is_directory(unknown))
            contents.push_back(path + '/');
        else if (entry->is_regular_file(unknown))
            contents.push_back(path);
    }
    std::sort(contents.begin(), contents.end());
    return contents;
}

} // namespace

void SourceSearch::run(const std::vector<std::string>& sources, Take take, const Report& report) {
    SourceSearch search(report);
    for (const std::string& source : sources) {
        if (!search.m_goesOn) return;
        if (take == Take::contents)
            search.take(source);
        else
            search.add(take == Take::files ? resolved(source) : source);
    }
    report(std::move(search.m_found));
}

std::string SourceSearch::resolved(const std::string& path) {
    std::error_code failed;
    const auto canonical = fs::weakly_canonical(path, failed);
    return failed ? path : canonical.string();
}

void SourceSearch::take(const std::string& source) {
    if (source.empty()) return; // an address without a path
    if (isAddress(source)) return add(source);
    if (isFolder(source)) return takeFolder(resolved(source));
    isPlaylist(source) ? takePlaylist(resolved(source)) : add(resolved(source));
}

void SourceSearch::takePlaylist(const std::string& path) {
    FileStatus status{};
    const auto list = TulPlaylistFileFactory().createPlaylistFile(path)->read(path, status);
    if (status != FileStatus::done) {
        m_found.playlist = path;
        m_found.status = status;
    }
    if (!list) return;
    std::ranges::move(list->entries, std::back_inserter(m_found.entries));
    reportSoon();
}

void SourceSearch::takeFolder(const std::string& folder) {
    for (const std::string& path : contentsOf(folder)) {
        if (!m_goesOn) return;
        if (path.ends_with('/'))
            takeFolder(path.substr(0, path.size() - 1));
        else
            isAudio(path) ? add(path) : skip();
    }
}

void SourceSearch::add(std::string source) {
    auto& entry = m_found.entries.emplace_back(std::make_unique<TulPlaylistEntry>());
    entry->source = std::move(source);
    entry->settleWithoutFile();
    reportSoon();
}

void SourceSearch::skip() {
    ++m_found.skipped;
    reportSoon();
}

void SourceSearch::reportSoon() {
    if (Clock::now() < m_reportAt) return;
    m_goesOn = m_report(std::exchange(m_found, {}));
    m_reportAt = Clock::now() + reportEvery;
}

} // namespace app
