#include "core/playlist/TrackInfo.h"

#include "core/playlist/TagFields.h"
#include "core/playlist/TagProgram.h"

std::optional<TrackInfo> readTrackInfo(const std::string& source) {
    const tags::Message answer = tags::ask(tags::Question::trackInfo, source);
    std::string_view fields = answer.text();
    if (fields.empty()) return std::nullopt;
    TrackInfo info;
    info.length = tags::takeNumber<int>(fields);
    info.title = tags::takeText(fields);
    info.artist = tags::takeText(fields);
    info.album = tags::takeText(fields);
    return info;
}

std::string packed(const TrackInfo& info) {
    std::string fields;
    tags::addFields(fields, std::to_string(static_cast<int>(info.length)), info.title, info.artist,
                    info.album);
    return fields;
}
