#include "core/playlist/TulPlaylistFileM3U.h"

#include "core/files/FileReader.h"
#include "core/playlist/PlaylistLimits.h"
#include "core/playlist/resolveEntrySource.h"

#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

namespace {

constexpr std::size_t maxLine = std::size_t{1} << 20;
constexpr std::string_view header = "#EXTM3U";
constexpr std::string_view information = "#EXTINF:";

struct TrackInformation {
    std::string title;
    std::int32_t seconds = 0;
};

/// Matches a line against "#EXTINF:([0-9]+),(.+)", where "." is any character but a carriage return.
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

/// Adds the entries of lines to a playlist.
class Lines {
public:
    Lines(TulPlaylist& playlist, std::string folder) : m_playlist(playlist), m_folder(std::move(folder)) {}

    void take(std::string_view line);
    /// True when a limit has been reached.
    [[nodiscard]] bool isFull() const { return m_isFull; }

private:
    TulPlaylist& m_playlist;
    std::string m_folder;
    PlaylistLimits m_limits;
    TrackInformation m_pending;
    bool m_isFull = false;
};

void Lines::take(std::string_view line) {
    if (line.starts_with(header)) return;
    if (line.starts_with(information)) {
        if (auto parsed = parseInformation(line)) m_pending = std::move(*parsed);
        return;
    }
    auto entry = std::make_unique<TulPlaylistEntry>();
    entry->source = resolveEntrySource(std::string(line), m_folder);
    if (!m_pending.title.empty()) {
        entry->title = std::exchange(m_pending.title, {});
        entry->length = knownLength(m_pending.seconds);
    }
    entry->settleWithoutFile();
    m_isFull = !m_limits.admit(*entry);
    if (!m_isFull) m_playlist.appendEntry(std::move(entry));
}

/// Passes the lines of a file to `lines`. FileStatus::cut when some were left out.
FileStatus readLines(FileReader& file, Lines& lines) {
    std::string line;
    bool isLeftOut = false;
    const auto append = [&](std::string_view part) {
        if (line.size() <= maxLine) line += part; // may exceed the limit, which marks the line as too long
    };
    const auto end = [&] {
        line.size() <= maxLine ? lines.take(line) : void(isLeftOut = true);
        line.clear();
    };
    std::string_view block = file.next();
    if (block.starts_with(byteOrderMark)) block.remove_prefix(byteOrderMark.size());
    for (; !block.empty(); block = file.next()) {
        for (auto lineEnd = block.find('\n'); lineEnd != std::string_view::npos; lineEnd = block.find('\n')) {
            append(block.substr(0, lineEnd));
            end();
            if (lines.isFull()) return FileStatus::cut;
            block.remove_prefix(lineEnd + 1);
        }
        append(block);
    }
    if (file.status() != FileStatus::done) return file.status();
    if (!line.empty()) end();
    return isLeftOut || lines.isFull() ? FileStatus::cut : FileStatus::done;
}

} // namespace

std::unique_ptr<TulPlaylist> TulPlaylistFileM3U::read(const std::string& path, FileStatus& status) {
    const std::string folder = playlistFolder(path);
    const std::string fileName = path.substr(folder.size());
    auto playlist = std::make_unique<TulPlaylist>();
    playlist->name = fileName.substr(0, fileName.rfind('.'));
    FileReader file(path);
    Lines lines(*playlist, folder);
    status = readLines(file, lines);
    if (status == FileStatus::done || status == FileStatus::cut) return playlist;
    if (playlist->entries.empty()) return nullptr;
    status = status == FileStatus::tooLarge ? FileStatus::cut : FileStatus::incomplete;
    return playlist;
}

FileStatus TulPlaylistFileM3U::write(const TulPlaylist& /*playlist*/, const std::string& /*path*/) {
    return FileStatus::done;
}
