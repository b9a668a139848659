#include "core/playlist/TulPlaylistFileM3U.h"

#include "core/files/readFile.h"
#include "core/playlist/resolveEntrySource.h"

#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace {

/// A file of nothing but line feeds must not fill the memory.
constexpr std::size_t maxEntries = 1'000'000;
constexpr std::string_view header = "#EXTM3U";
constexpr std::string_view information = "#EXTINF:";

struct TrackInformation {
    std::string title;
    std::int32_t seconds = 0;
};

/// Matches "#EXTINF:([0-9]+),(.+)" against the whole line, where "." is anything but a carriage return.
std::optional<TrackInformation> parseInformation(std::string_view line) {
    const std::string_view rest = line.substr(information.size());
    const auto comma = rest.find_first_not_of("0123456789");
    if (comma == 0 || comma == std::string_view::npos || rest[comma] != ',') return std::nullopt;
    const std::string_view title = rest.substr(comma + 1);
    if (title.empty() || title.find('\r') != std::string_view::npos) return std::nullopt;

    const std::string digits(rest.substr(0, comma));
    const unsigned long seconds = std::strtoul(digits.c_str(), nullptr, 0);
    return TrackInformation{std::string(title), static_cast<std::int32_t>(seconds)};
}

std::vector<std::unique_ptr<TulPlaylistEntry>> parseEntries(std::string_view text,
                                                            const std::string& folder) {
    std::vector<std::unique_ptr<TulPlaylistEntry>> entries;
    TrackInformation pending;
    while (!text.empty() && entries.size() < maxEntries) {
        const auto lineEnd = text.find('\n');
        const std::string_view line = text.substr(0, lineEnd);
        text.remove_prefix(lineEnd == std::string_view::npos ? text.size() : lineEnd + 1);

        if (line.starts_with(header)) continue;
        if (line.starts_with(information)) {
            if (auto parsed = parseInformation(line)) pending = std::move(*parsed);
            continue;
        }
        auto& entry = entries.emplace_back(std::make_unique<TulPlaylistEntry>());
        entry->source = resolveEntrySource(std::string(line), folder);
        if (!pending.title.empty()) {
            entry->title = std::exchange(pending.title, {});
            entry->length = pending.seconds;
        }
        entry->settleWithoutFile();
    }
    return entries;
}

} // namespace

std::unique_ptr<TulPlaylist> TulPlaylistFileM3U::read(const std::string& path) {
    const std::string folder = playlistFolder(path);
    const std::string fileName = path.substr(folder.size());
    auto playlist = std::make_unique<TulPlaylist>();
    playlist->name = fileName.substr(0, fileName.rfind('.'));
    FileStatus status{};
    if (const auto text = readFile(path, status)) playlist->entries = parseEntries(*text, folder);
    return playlist;
}

FileStatus TulPlaylistFileM3U::write(const TulPlaylist& /*playlist*/, const std::string& /*path*/) {
    return FileStatus::done;
}
