#include "platform/bass/source/StationList.h"

#include "platform/bass/source/Source.h"

#include <algorithm>

namespace bass {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view blanks = " \t\r\n";

std::string_view withoutMark(std::string_view text) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

bool isText(std::string_view bytes) {
    return std::ranges::all_of(bytes, [](unsigned char byte) {
        return byte >= ' ' || blanks.find(static_cast<char>(byte)) != std::string_view::npos;
    });
}

bool startsWithIgnoringCase(std::string_view text, std::string_view lowerCase) {
    const auto lower = [](char letter) { return letter >= 'A' && letter <= 'Z' ? letter + 32 : letter; };
    return text.size() >= lowerCase.size() &&
           std::equal(lowerCase.begin(), lowerCase.end(), text.begin(),
                      [&](char wanted, char letter) { return lower(letter) == wanted; });
}

/// The address in a line of either kind of list: "http://..." or "File1=http://...".
std::string_view namedBy(std::string_view line) {
    if (!startsWithIgnoringCase(line, "file")) return line;
    const std::size_t equals = line.find('=');
    return equals == std::string_view::npos ? line : line.substr(equals + 1);
}

} // namespace

bool isStationList(std::string_view head) {
    const std::string_view text = withoutMark(head);
    return isText(text) && (text.starts_with('#') || startsWithIgnoringCase(text, "http") ||
                            startsWithIgnoringCase(text, "[playl"));
}

std::optional<std::string> firstAddress(std::string_view list) {
    if (list.find("#EXT-X-") != std::string_view::npos) return std::nullopt;
    list = withoutMark(list);
    while (!list.empty()) {
        const std::size_t end = std::min(list.find_first_of("\r\n"), list.size());
        if (auto address = normalizedAddress(std::string(namedBy(list.substr(0, end))))) return address;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return std::nullopt;
}

} // namespace bass
