#include "core/playlist/TulInternalPlaylistManager.h"

#include "core/playlist/Json.h"
#include "core/playlist/readFile.h"
#include "core/playlist/replaceFile.h"

#include <algorithm>
#include <optional>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace fs = std::filesystem;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

/// Nothing when the text is no store at all.
std::optional<Pairs> parseStore(const std::string& text) {
    rapidjson::Document root;
    if (!json::parse(text, root)) return std::nullopt;
    const rapidjson::Value* elements = json::member(root, "entries");
    if (!elements || !elements->IsArray()) return std::nullopt;

    Pairs pairs;
    for (const auto& element : elements->GetArray()) {
        const rapidjson::Value* source = json::stringMember(element, "source");
        const rapidjson::Value* name = json::stringMember(element, "name");
        if (source && name) pairs.emplace_back(source->GetString(), name->GetString());
    }
    return pairs;
}

/// Renames a store that holds something, but nothing we can use. False when it is still in the way.
bool setAsideBroken(const fs::path& store) {
    std::error_code failed;
    if (!fs::is_regular_file(store, failed) || fs::file_size(store, failed) == 0) return true;
    const auto text = readFile(store);
    if (text && parseStore(*text)) return true;

    fs::path aside;
    for (int number = 1; number == 1 || fs::exists(fs::symlink_status(aside)); ++number) {
        aside = store;
        aside += ".broken-" + std::to_string(number);
    }
    fs::rename(store, aside, failed);
    return !failed;
}

} // namespace

void TulInternalPlaylistManager::load() {
    playlists.clear();
    const auto text = readFile(storePath);
    if (!text) return;
    if (auto pairs = parseStore(*text)) playlists = std::move(*pairs);
}

void TulInternalPlaylistManager::save() const {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key("entries");
    writer.StartArray();
    for (const auto& [path, name] : playlists) {
        writer.StartObject();
        writer.Key("source");
        writer.String(path);
        writer.Key("name");
        writer.String(name);
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    if (!setAsideBroken(followLinks(storePath))) return;
    [[maybe_unused]] const bool written = replaceFile(storePath, {buffer.GetString(), buffer.GetSize()});
}

std::int64_t TulInternalPlaylistManager::count() const {
    return static_cast<std::int64_t>(playlists.size());
}

std::pair<std::string, std::string> TulInternalPlaylistManager::playlistAt(std::int32_t index) const {
    return playlists.at(static_cast<std::size_t>(index));
}

std::int32_t TulInternalPlaylistManager::indexOfName(const std::string& name) const {
    const auto found = std::ranges::find(playlists, name, &std::pair<std::string, std::string>::second);
    return found == playlists.end() ? -1 : static_cast<std::int32_t>(found - playlists.begin());
}

void TulInternalPlaylistManager::addPlaylist(const std::string& name, const std::string& path) {
    const bool known =
        std::ranges::find(playlists, path, &std::pair<std::string, std::string>::first) != playlists.end();
    if (name.empty() || known) return;
    playlists.emplace_back(path, name);
    currentIndex = static_cast<std::int32_t>(count() - 1);
}
