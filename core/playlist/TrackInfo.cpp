#include "core/playlist/TrackInfo.h"

#include "core/playlist/TagProgram.h"

#include <charconv>
#include <string_view>

namespace {

/// Takes the text up to the next zero character from the front of `message`.
std::string_view take(std::string_view& message) {
    const auto end = message.find('\0');
    const std::string_view text = message.substr(0, end);
    message.remove_prefix(end == message.npos ? message.size() : end + 1);
    return text;
}

} // namespace

std::optional<TrackInfo> readTrackInfo(const std::string& source) {
    const tags::Message answer = tags::ask(tags::Question::trackInfo, source);
    std::string_view message = answer.text();
    if (message.empty()) return std::nullopt;
    TrackInfo info;
    int seconds = 0;
    const std::string_view length = take(message);
    std::from_chars(length.begin(), length.end(), seconds);
    info.length = seconds;
    info.title = take(message);
    info.artist = take(message);
    info.album = take(message);
    return info;
}

std::string packed(const TrackInfo& info) {
    std::string message = std::to_string(static_cast<int>(info.length));
    for (const std::string* text : {&info.title, &info.artist, &info.album})
        message.append(1, '\0').append(*text);
    return message;
}
