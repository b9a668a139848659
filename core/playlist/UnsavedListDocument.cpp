#include "core/playlist/UnsavedListDocument.h"

#include "core/playlist/JsonList.h"
#include "core/playlist/TulPlaylist.h"
#include "core/playlist/TuqVisitor.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <rapidjson/filereadstream.h>
#include <rapidjson/reader.h>

namespace {

using Header = UnsavedListDocument::Header;

/// Collects the members before the entries, and ends parsing there.
struct HeaderHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, HeaderHandler> {
    Header header;
    std::string member;
    bool isComplete = false;

    bool Key(const char* text, rapidjson::SizeType size, bool /*copy*/) {
        member.assign(text, size);
        isComplete = member == "entries";
        return !isComplete;
    }
    bool String(const char* text, rapidjson::SizeType size, bool /*copy*/) {
        if (member == "file") header.file.assign(text, size);
        if (member == "name") header.name.assign(text, size);
        return true;
    }
    bool Uint(unsigned value) { return Int64(value); }
    bool Int64(std::int64_t value) {
        if (member == "changed") header.changedAt = value;
        return true;
    }
    bool Uint64(std::uint64_t value) { return Int64(static_cast<std::int64_t>(value)); }
    bool StartArray() { return false; }
};

} // namespace

UnsavedListDocument::UnsavedListDocument(const TulPlaylist& list) {
    m_writer.StartObject();
    addMember("file", list.path);
    addMember("name", list.name);
    m_writer.Key("changed");
    m_writer.Int64(list.changedAt());
    m_writer.Key("start");
    m_writer.Int(list.currentIndex);
    m_writer.Key("entries");
    m_writer.StartArray();
}

void UnsavedListDocument::add(const TulPlaylistEntry& entry) {
    m_writer.StartObject();
    addMember("source", entry.source);
    addMember("title", entry.title);
    addMember("artist", entry.artist);
    addMember("album", entry.album);
    m_writer.Key("length");
    m_writer.Double(std::isfinite(entry.length) ? entry.length : 0.0);
    m_writer.EndObject();
}

void UnsavedListDocument::addMember(const char* name, const std::string& text) {
    m_writer.Key(name);
    m_writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

std::string UnsavedListDocument::takeText() {
    m_writer.EndArray();
    m_writer.EndObject();
    return {m_buffer.GetString(), m_buffer.GetSize()};
}

std::optional<Header> UnsavedListDocument::readHeader(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "re"), &std::fclose);
    if (!file) return std::nullopt;
    std::array<char, 4096> buffer{};
    rapidjson::FileReadStream stream(file.get(), buffer.data(), buffer.size());
    HeaderHandler handler;
    rapidjson::Reader().Parse(stream, handler);
    if (!handler.isComplete) return std::nullopt;
    return handler.header;
}

std::unique_ptr<TulPlaylist> UnsavedListDocument::read(const std::string& path) {
    const auto header = readHeader(path);
    TuqVisitor visitor(std::string{}); // sources are kept as they are
    if (!header || json::readList(path, visitor) != FileStatus::done) return nullptr;
    auto list = visitor.finish();
    if (!list) return nullptr;
    list->path = header->file;
    list->markChanged(header->changedAt);
    return list;
}
