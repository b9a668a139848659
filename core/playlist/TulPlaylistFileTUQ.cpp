#include "core/playlist/TulPlaylistFileTUQ.h"

#include "core/files/FileReader.h"
#include "core/files/replaceFile.h"
#include "core/playlist/JsonList.h"
#include "core/playlist/PlaylistLimits.h"
#include "core/playlist/TulPlaylistFileM3U.h"
#include "core/playlist/TuqVisitor.h"
#include "core/playlist/resolveEntrySource.h"

#include <algorithm>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace {

/// True for a file whose first block is text and does not begin like JSON.
bool isOtherText(const std::string& path) {
    FileReader file(path);
    std::string_view block = file.next();
    if (block.starts_with(byteOrderMark)) block.remove_prefix(byteOrderMark.size());
    const auto first = block.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos || block[first] == '{' || block[first] == '[') return false;
    return std::ranges::none_of(
        block, [](unsigned char c) { return c < ' ' && c != '\t' && c != '\r' && c != '\n'; });
}

/// Null when there is no usable line.
std::unique_ptr<TulPlaylist> readAsM3U(const std::string& path, FileStatus& status) {
    auto playlist = TulPlaylistFileM3U().read(path, status);
    if (playlist && playlist->entries.empty()) status = FileStatus::malformed;
    return status == FileStatus::malformed ? nullptr : std::move(playlist);
}

} // namespace

std::unique_ptr<TulPlaylist> TulPlaylistFileTUQ::read(const std::string& path, FileStatus& status) {
    TuqVisitor visitor(playlistFolder(path));
    status = json::readList(path, visitor);
    if (status == FileStatus::malformed && !path.ends_with(".tuq") && isOtherText(path))
        return readAsM3U(path, status);
    if (status != FileStatus::done) return nullptr;
    auto playlist = visitor.finish();
    status = !playlist ? FileStatus::malformed : visitor.isCut() ? FileStatus::cut : FileStatus::done;
    return playlist;
}

FileStatus TulPlaylistFileTUQ::write(const TulPlaylist& playlist, const std::string& path) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key("name");
    writer.String(playlist.name);
    writer.Key("entries");
    writer.StartArray();
    for (const auto& entry : playlist.entries) {
        writer.StartObject();
        writer.Key("source");
        writer.String(entry->source);
        writer.Key("title");
        writer.String(entry->title);
        writer.Key("artist");
        writer.String(entry->artist);
        writer.Key("album");
        writer.String(entry->album);
        writer.Key("length");
        writer.Int(static_cast<int>(knownLength(entry->length)));
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    return replaceFile(path, {buffer.GetString(), buffer.GetSize()});
}
