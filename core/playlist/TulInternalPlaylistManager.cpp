#include "core/playlist/TulInternalPlaylistManager.h"

#include "core/files/FolderLock.h"
#include "core/files/folders.h"
#include "core/files/replaceFile.h"
#include "core/playlist/JsonList.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string_view>
#include <unordered_set>

namespace {

using Pair = std::pair<std::string, std::string>;
using Pairs = std::vector<Pair>;

/// Collects the valid elements.
class StoreVisitor : public json::ListVisitor {
public:
    explicit StoreVisitor(Pairs& pairs) : m_pairs(pairs) {}

    bool rootMember(std::string_view /*name*/, const json::Value& /*value*/) override { return true; }
    bool beginEntry() override {
        m_source = m_name = std::nullopt;
        m_hasSource = m_hasName = false;
        return true;
    }
    bool entryMember(std::string_view name, const json::Value& value) override {
        if (name == "source") take(value, m_source, m_hasSource);
        if (name == "name") take(value, m_name, m_hasName);
        return true;
    }
    bool endEntry() override {
        if (!m_source || !m_name) return true;
        isCut = m_pairs.size() == TulInternalPlaylistManager::maxPlaylists;
        if (!isCut) m_pairs.emplace_back(std::move(*m_source), std::move(*m_name));
        return true;
    }

    bool isCut = false;

private:
    static void take(const json::Value& value, std::optional<std::string>& field, bool& has) {
        if (!std::exchange(has, true)) field = value.string; // the first counts
    }

    Pairs& m_pairs;
    std::optional<std::string> m_source;
    std::optional<std::string> m_name;
    bool m_hasSource = false;
    bool m_hasName = false;
};

/// Reads the store's pairs. An empty file, as a full disk may leave it, counts as an empty store.
FileStatus readStore(const std::string& path, Pairs& pairs) {
    StoreVisitor visitor(pairs);
    const FileStatus status = json::readList(path, visitor);
    if (status == FileStatus::done) return visitor.isCut ? FileStatus::cut : FileStatus::done;
    pairs.clear();
    std::error_code failed;
    return status == FileStatus::malformed && std::filesystem::file_size(path, failed) == 0 ? FileStatus::done
                                                                                            : status;
}

FileStatus writeStore(const std::string& path, const Pairs& pairs) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key("entries");
    writer.StartArray();
    for (const auto& [source, name] : pairs) {
        writer.StartObject();
        writer.Key("source");
        writer.String(source);
        writer.Key("name");
        writer.String(name);
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    return replaceFile(path, {buffer.GetString(), buffer.GetSize()});
}

} // namespace

FileStatus TulInternalPlaylistManager::load() {
    playlists.clear();
    m_savedRenames.clear();
    const FileStatus status = readStore(storePath, playlists);
    return status == FileStatus::notFound ? FileStatus::done : status;
}

FileStatus TulInternalPlaylistManager::save() {
    m_savedRenames.clear();
    const std::filesystem::path folder = folderOf(followLinks(storePath));
    makeFolder(folder); // on failure the write reports the error
    const FolderLock lock(folder);
    if (!lock.isHeld()) return FileStatus::busy;

    Pairs stored;
    const FileStatus read = readStore(storePath, stored);
    if (read != FileStatus::done && read != FileStatus::notFound) return read;
    mergeInto(std::move(stored));
    const FileStatus written = writeStore(storePath, playlists);
    if (written == FileStatus::done) m_savedRenames = std::exchange(m_renames, {});
    return written;
}

void TulInternalPlaylistManager::takeStored(const TulInternalPlaylistManager& copy) {
    std::erase_if(m_renames, [&copy](const Pair& rename) {
        return std::ranges::find(copy.m_savedRenames, rename) != copy.m_savedRenames.end();
    });
    mergeInto(copy.playlists);
}

/// Puts the stored playlists first, so that all programs show the same order. `currentIndex` follows its
/// playlist.
void TulInternalPlaylistManager::mergeInto(Pairs stored) {
    const bool hasCurrent = currentIndex >= 0 && currentIndex < count();
    const std::string current = hasCurrent ? playlistAt(currentIndex).first : std::string();

    std::unordered_set<std::string> known;
    for (const auto& [path, name] : stored)
        known.insert(path);
    for (Pair& own : playlists)
        if (!known.contains(own.first)) stored.push_back(std::move(own));
    playlists = std::move(stored);
    for (const auto& [path, name] : m_renames)
        for (Pair& each : playlists)
            if (each.first == path) each.second = name;

    const auto found = std::ranges::find(playlists, current, &Pair::first);
    if (hasCurrent) currentIndex = static_cast<std::int32_t>(found - playlists.begin());
}

std::int64_t TulInternalPlaylistManager::count() const {
    return static_cast<std::int64_t>(playlists.size());
}

std::pair<std::string, std::string> TulInternalPlaylistManager::playlistAt(std::int32_t index) const {
    return playlists.at(static_cast<std::size_t>(index));
}

std::int32_t TulInternalPlaylistManager::indexOfName(const std::string& name) const {
    const auto found = std::ranges::find(playlists, name, &Pair::second);
    return found == playlists.end() ? -1 : static_cast<std::int32_t>(found - playlists.begin());
}

void TulInternalPlaylistManager::addPlaylist(const std::string& name, const std::string& path) {
    const bool known = std::ranges::find(playlists, path, &Pair::first) != playlists.end();
    if (name.empty() || known || playlists.size() >= maxPlaylists) return;
    playlists.emplace_back(path, name);
    currentIndex = static_cast<std::int32_t>(count() - 1);
}

void TulInternalPlaylistManager::renamePlaylist(const std::string& path, const std::string& name) {
    const auto known = std::ranges::find(playlists, path, &Pair::first);
    if (name.empty() || known == playlists.end() || known->second == name) return;
    m_renames.emplace_back(path, name);
    known->second = name;
}
