#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

/// The protocol between the player and tulplayer-tags: messages of bytes, each preceded by its size.
namespace tags {

enum class Question : char {
    trackInfo = 't', ///< Answered by packed(TrackInfo), or empty.
    coverArt = 'c',  ///< Answered by the picture, or empty.
    details = 'd',   ///< Answered by packed(FileDetails), or empty.
};

/// Limits for what the player accepts of one file.
inline constexpr std::size_t maxPictureBytes = std::size_t{32} << 20;
inline constexpr std::size_t maxTextLetters = 4096;

struct Message {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;

    [[nodiscard]] std::string_view text() const { return {bytes.get(), size}; }
};

/// False when the peer has closed the socket.
bool send(int socket, std::string_view message);
/// None when the peer has closed the socket, or announces more than `maxPictureBytes`.
std::optional<Message> receive(int socket);

} // namespace tags
