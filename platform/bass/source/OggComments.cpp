#include "platform/bass/source/OggComments.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

namespace bass {
namespace {

constexpr std::array<std::string_view, 3> shownKeys = {"TITLE", "ARTIST", "ALBUM"};
constexpr std::size_t maxCommentBytes = 1024;
constexpr std::size_t maxCommentsBytes = 4096;

std::string upperCase(std::string_view text) {
    std::string upper(text);
    for (char& letter : upper)
        if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
    return upper;
}

std::optional<std::uint32_t> takeNumber(std::string_view& block) {
    if (block.size() < 4) return std::nullopt;
    std::uint32_t number = 0;
    for (unsigned i = 0; i < 4; ++i)
        number |= static_cast<std::uint32_t>(static_cast<unsigned char>(block[i])) << 8 * i;
    block.remove_prefix(4);
    return number;
}

/// Removes a text and its length from `block`; none when the block ends before.
std::optional<std::string_view> takeText(std::string_view& block) {
    const auto size = takeNumber(block);
    if (!size || *size > block.size()) return std::nullopt;
    const std::string_view text = block.substr(0, *size);
    block.remove_prefix(*size);
    return text;
}

} // namespace

void addComment(std::string& comments, std::string_view key, std::string_view value) {
    const std::string name = upperCase(key);
    if (std::ranges::find(shownKeys, name) == shownKeys.end() || value.size() > maxCommentBytes) return;
    if (comments.size() + name.size() + value.size() + 2 > maxCommentsBytes) return;
    comments.append(name).append("=").append(value.substr(0, value.find('\0'))).push_back('\0');
}

std::string readComments(std::string_view block) {
    std::string comments;
    if (!takeText(block)) return comments;
    const auto count = takeNumber(block);
    for (std::uint32_t i = 0; count && i < *count; ++i) {
        const auto comment = takeText(block);
        if (!comment) break;
        const std::size_t equals = comment->find('=');
        if (equals != std::string_view::npos)
            addComment(comments, comment->substr(0, equals), comment->substr(equals + 1));
    }
    return comments;
}

} // namespace bass
