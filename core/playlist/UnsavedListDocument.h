#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string>

class TulPlaylist;
class TulPlaylistEntry;

/// The text that keeps a changed playlist: a document of the native playlist format that also says where the
/// list belongs and which entry is current, before its entries. Made step by step, as a long list takes more
/// time than the main thread has.
class UnsavedListDocument {
public:
    struct Header {
        std::string file; ///< The list's playlist file; empty when it has none.
        std::string name;
        std::int64_t changedAt = 0; ///< Of the last edit, milliseconds since 1970.
    };

    explicit UnsavedListDocument(const TulPlaylist& list);
    void add(const TulPlaylistEntry& entry);
    /// The last call.
    std::string takeText();

    /// Reads no more of the file than its beginning. Nothing when it is no such document.
    static std::optional<Header> readHeader(const std::string& path);
    /// The list as it was written, changed. Null when it is no such document.
    static std::unique_ptr<TulPlaylist> read(const std::string& path);

private:
    void addMember(const char* name, const std::string& text);

    rapidjson::StringBuffer m_buffer;
    rapidjson::Writer<rapidjson::StringBuffer> m_writer{m_buffer};
};
