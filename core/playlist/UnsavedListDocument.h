#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string>

class TulPlaylist;
class TulPlaylistEntry;

/// Serialises a changed playlist: a document of the native playlist format with additional members, before
/// its entries, for the list's file and current entry. Entries are added one by one, so that the main thread
/// can write a long list in steps.
class UnsavedListDocument {
public:
    struct Header {
        std::string file; ///< The list's playlist file; empty when it has none.
        std::string name;
        std::int64_t changedAt = 0; ///< Time of the last edit, milliseconds since 1970.
    };

    explicit UnsavedListDocument(const TulPlaylist& list);
    void add(const TulPlaylistEntry& entry);
    /// To be called last.
    std::string takeText();

    /// Reads only the beginning of a file. None when it is not such a document.
    static std::optional<Header> readHeader(const std::string& path);
    /// The list, marked as changed. Null when the file is not such a document.
    static std::unique_ptr<TulPlaylist> read(const std::string& path);

private:
    void addMember(const char* name, const std::string& text);

    rapidjson::StringBuffer m_buffer;
    rapidjson::Writer<rapidjson::StringBuffer> m_writer{m_buffer};
};
