#pragma once

#include <charconv>
#include <string>
#include <string_view>

/// A message of tulplayer-tags is a sequence of texts, each terminated by a zero character.
namespace tags {

template <typename... Texts> void addFields(std::string& message, const Texts&... texts) {
    (message.append(texts).append(1, '\0'), ...);
}

/// Removes the first text from `message` and returns it; empty when there is none.
inline std::string_view takeText(std::string_view& message) {
    const auto end = message.find('\0');
    const std::string_view text = message.substr(0, end);
    message.remove_prefix(end == message.npos ? message.size() : end + 1);
    return text;
}

/// The same for a number; 0 when the text is not one.
template <typename Number> Number takeNumber(std::string_view& message) {
    const std::string_view text = takeText(message);
    Number number{};
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

} // namespace tags
