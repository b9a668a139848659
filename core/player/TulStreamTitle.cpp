#include "core/player/TulStreamTitle.h"

#include "core/player/decodeText.h"

#include <algorithm>
#include <map>
#include <optional>

namespace {

char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// npos when not found.
std::size_t findIgnoringCase(std::string_view text, std::string_view lowerCase, std::size_t from = 0) {
    if (from > text.size()) return std::string_view::npos;
    const auto found =
        std::search(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), lowerCase.begin(),
                    lowerCase.end(), [](char letter, char wanted) { return lower(letter) == wanted; });
    return found == text.end() ? std::string_view::npos : static_cast<std::size_t>(found - text.begin());
}

/// The part of `text` from behind `key` up to `end`; empty when the key is not found.
std::string_view valueOf(std::string_view text, std::string_view key, char end) {
    const std::size_t at = findIgnoringCase(text, key);
    if (at == std::string_view::npos) return {};
    const std::string_view value = text.substr(at + key.size());
    return value.substr(0, value.find(end));
}

/// The value of StreamTitle. Titles may contain "';" themselves: the end is the first "';" followed by
/// another field or by nothing, else the first "';" at all.
std::string_view streamTitleOf(std::string_view packet) {
    constexpr std::string_view key = "streamtitle='";
    constexpr std::string_view quote = "';";
    const std::size_t at = findIgnoringCase(packet, key);
    if (at == std::string_view::npos) return {};
    const std::string_view value = packet.substr(at + key.size());
    for (std::size_t end = value.find(quote); end != std::string_view::npos;
         end = value.find(quote, end + 1)) {
        const std::string_view behind = value.substr(end + quote.size());
        if (behind.empty() || findIgnoringCase(behind, "stream") == 0) return value.substr(0, end);
    }
    const std::size_t end = value.find(quote);
    return value.substr(0, end == std::string_view::npos ? value.rfind('\'') : end);
}

bool isKeyLetter(char letter) {
    return (lower(letter) >= 'a' && lower(letter) <= 'z') || (letter >= '0' && letter <= '9') ||
           letter == '_';
}

std::string_view trimmed(std::string_view text, std::string_view unwanted) {
    const std::size_t first = text.find_first_not_of(unwanted);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(unwanted) - first + 1);
}

/// Some stations put key="value" pairs for their own programs into the title, like 'Band - text="Song"
/// id="7"'. Keeps artist, title and text of them.
std::string withoutPairs(std::string_view title) {
    std::map<std::string, std::string_view, std::less<>> pairs;
    std::size_t firstPair = title.size();
    for (std::size_t at = title.find("=\""); at != std::string_view::npos; at = title.find("=\"", at + 1)) {
        std::size_t start = at;
        while (start > 0 && isKeyLetter(title[start - 1]))
            --start;
        const std::size_t value = at + 2;
        const std::size_t end = title.find('"', value);
        if (start == at || end == std::string_view::npos) continue;
        std::string key(title.substr(start, at - start));
        std::ranges::transform(key, key.begin(), lower);
        pairs.emplace(key, title.substr(value, end - value));
        firstPair = std::min(firstPair, start);
    }
    std::string text(trimmed(title.substr(0, firstPair), firstPair < title.size() ? " ,-" : " "));
    for (const char* key : {"artist", "title", "text"}) {
        const auto found = pairs.find(key);
        if (found != pairs.end() && !found->second.empty())
            text.append(text.empty() ? "" : " - ").append(found->second);
    }
    return text;
}

/// The value of a comment in a list of comments, each terminated by a NUL; empty when not found.
std::string_view commentOf(std::string_view comments, std::string_view key) {
    while (!comments.empty()) {
        const std::size_t end = std::min(comments.find('\0'), comments.size());
        if (findIgnoringCase(comments.substr(0, end), key) == 0)
            return comments.substr(key.size(), end - key.size());
        comments.remove_prefix(std::min(end + 1, comments.size()));
    }
    return {};
}

} // namespace

TulStreamTitle parseStreamTitle(std::string_view icyHeaders, std::string_view icyMetadata,
                                std::string_view comments) {
    TulStreamTitle said;
    said.station = decodeText(valueOf(icyHeaders, "icy-name:", '\n'));
    said.title = decodeText(commentOf(comments, "title="));
    said.artist = decodeText(commentOf(comments, "artist="));
    said.album = decodeText(commentOf(comments, "album="));
    if (said.title.empty()) said.title = decodeText(withoutPairs(streamTitleOf(icyMetadata)));
    return said;
}
