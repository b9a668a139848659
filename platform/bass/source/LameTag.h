#pragma once

#include "platform/bass/source/FfmpegPtr.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace bass {

/// LAME's extension of the Xing/Info frame of an MP3 file.
struct LameTag {
    int encoderDelay = 0;   ///< frames before the source's first frame
    int encoderPadding = 0; ///< frames after the source's last frame
    bool constantBitRate = false;

    /// Frames of delay that a decoder adds.
    static constexpr int decoderDelay = 529;
    [[nodiscard]] int startPadding() const { return encoderDelay + decoderDelay; }
    [[nodiscard]] int endPadding() const { return std::max(0, encoderPadding - decoderDelay); }
};

inline constexpr std::size_t id3HeaderBytes = 10;
/// The size of the ID3v2 tag that starts with `header`, including the header; none when it is not one.
[[nodiscard]] std::optional<std::int64_t> id3TagBytes(std::span<const unsigned char, id3HeaderBytes> header);
using Id3Header = std::array<unsigned char, id3HeaderBytes>;
/// Skips the ID3v2 tags at the current position; returns the offset of their end. `visit` is called after
/// reading the header of each, with the size of the tag, and may read its content.
std::int64_t skipId3Tags(AVIOContext& io,
                         const std::function<void(const Id3Header& header, std::int64_t size)>& visit = {});
/// Reads the tag in the MPEG audio frame at the current position; none when there is none.
[[nodiscard]] std::optional<LameTag> readLameTag(AVIOContext& io);

} // namespace bass
