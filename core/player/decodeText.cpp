#include "core/player/decodeText.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <iconv.h>
#include <memory>
#include <optional>
#include <type_traits>

namespace {

/// Longer than any line the window shows.
constexpr std::size_t maxBytes = 1000;

struct IconvCloser {
    void operator()(iconv_t converter) const { iconv_close(converter); }
};
using Converter = std::unique_ptr<std::remove_pointer_t<iconv_t>, IconvCloser>;

/// None when the bytes are not valid in the encoding. A character that is cut off at the end is dropped.
std::optional<std::string> toUtf8(std::string_view bytes, const char* encoding) {
    const iconv_t opened = iconv_open("UTF-8", encoding);
    if (reinterpret_cast<std::intptr_t>(opened) == -1) return std::nullopt;
    const Converter converter(opened);
    std::string input(bytes);
    std::string text(bytes.size() * 4, '\0');
    char* in = input.data();
    char* out = text.data();
    std::size_t inLeft = input.size();
    std::size_t outLeft = text.size();
    const bool failed = iconv(opened, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1);
    if (failed && errno != EINVAL) return std::nullopt;
    text.resize(text.size() - outLeft);
    return text;
}

bool looksCyrillic(std::string_view bytes) {
    constexpr int lettersInARow = 3;
    int letters = 0;
    return std::ranges::any_of(bytes, [&](char byte) {
        letters = static_cast<unsigned char>(byte) >= 0xC0 ? letters + 1 : 0;
        return letters == lettersInARow;
    });
}

std::string asciiOf(std::string_view bytes) {
    std::string text(bytes);
    std::ranges::replace_if(
        text, [](char byte) { return static_cast<unsigned char>(byte) > 0x7F; }, '?');
    return text;
}

/// Replaces control characters by blanks, also U+0080 to U+009F, which take two bytes in UTF-8.
std::string oneLineOf(std::string text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte < 0x20 || byte == 0x7F) text[at] = ' ';
        const bool isControl =
            byte == 0xC2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0;
        if (isControl) text.replace(at, 2, " ");
    }
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

} // namespace

std::string decodeText(std::string_view bytes) {
    bytes = bytes.substr(0, std::min(bytes.size(), maxBytes));
    if (auto text = toUtf8(bytes, "UTF-8")) return oneLineOf(std::move(*text));
    if (auto text = toUtf8(bytes, looksCyrillic(bytes) ? "CP1251" : "CP1252"))
        return oneLineOf(std::move(*text));
    return oneLineOf(toUtf8(bytes, "ISO-8859-1").value_or(asciiOf(bytes)));
}
