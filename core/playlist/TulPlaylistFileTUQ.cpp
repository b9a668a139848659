#include "core/playlist/TulPlaylistFileTUQ.h"

#include "core/files/readFile.h"
#include "core/files/replaceFile.h"
#include "core/playlist/Json.h"
#include "core/playlist/resolveEntrySource.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <vector>

namespace {

/// The seconds without their fraction, kept in range.
std::int32_t wholeSeconds(double seconds) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(seconds)) return 0;
    return static_cast<std::int32_t>(std::clamp<double>(seconds, Limits::min(), Limits::max()));
}

} // namespace

std::unique_ptr<TulPlaylist> TulPlaylistFileTUQ::read(const std::string& path) {
    FileStatus status{};
    const auto text = readFile(path, status);
    rapidjson::Document root;
    if (!text || !json::parse(*text, root)) return nullptr;

    const rapidjson::Value* name = json::stringMember(root, "name");
    const rapidjson::Value* elements = json::member(root, "entries");
    const rapidjson::Value* start = json::member(root, "start");
    if (!name || !elements || !elements->IsArray() || (start && !start->IsInt())) return nullptr;

    const std::string folder = playlistFolder(path);
    auto playlist = std::make_unique<TulPlaylist>();
    playlist->name = name->GetString();
    playlist->entries.reserve(elements->Size());
    for (const auto& element : elements->GetArray()) {
        if (json::member(element, "smart")) continue;
        auto entry = readEntry(element, root, folder);
        if (!entry) return nullptr;
        playlist->appendEntry(std::move(entry));
    }
    if (start) playlist->selectEntry(start->GetInt());
    return playlist;
}

std::unique_ptr<TulPlaylistEntry> TulPlaylistFileTUQ::readEntry(const rapidjson::Value& element,
                                                                const rapidjson::Value& root,
                                                                const std::string& folder) {
    const rapidjson::Value* source = json::stringMember(element, "source");
    const rapidjson::Value* length = json::member(element, "length");
    if (!source || (length && !length->IsNumber())) return nullptr;

    // The root's artist and album stand in where the element has none.
    auto entry = std::make_unique<TulPlaylistEntry>();
    const bool valid = json::takeOptional(element, "title", entry->title) &&
                       json::takeOptional(root, "artist", entry->artist) &&
                       json::takeOptional(root, "album", entry->album) &&
                       json::takeOptional(element, "artist", entry->artist) &&
                       json::takeOptional(element, "album", entry->album);
    if (!valid) return nullptr;

    entry->source = resolveEntrySource(source->GetString(), folder);
    if (length) entry->length = length->GetDouble();
    if (!entry->artist.empty() && !entry->album.empty())
        entry->artistAlbum = entry->artist + " - " + entry->album;
    entry->settleWithoutFile();
    return entry;
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
        writer.Int(wholeSeconds(entry->length));
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    return replaceFile(path, {buffer.GetString(), buffer.GetSize()});
}
