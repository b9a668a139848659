#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

/// What the player asks the program that reads tags, and what that answers: bytes, with their count before
/// them.
namespace tags {

enum class Question : char {
    trackInfo = 't', ///< Answered by packed(TrackInfo), or by nothing.
    coverArt = 'c',  ///< Answered by the picture, or by nothing.
    details = 'd',   ///< Answered by packed(FileDetails), or by nothing.
};

/// Limits for what a file may make the player hold.
inline constexpr std::size_t maxPictureBytes = std::size_t{32} << 20;
inline constexpr std::size_t maxTextLetters = 4096;

struct Message {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;

    [[nodiscard]] std::string_view text() const { return {bytes.get(), size}; }
};

/// False when the other side has gone.
bool send(int socket, std::string_view message);
/// Nothing when the other side has gone, or announces more than `maxPictureBytes`.
std::optional<Message> receive(int socket);

} // namespace tags
