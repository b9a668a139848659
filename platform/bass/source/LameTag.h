#pragma once

#include "platform/bass/source/FfmpegPtr.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace bass {

/// What the Xing/Info frame of an MP3 file says beyond its frame count (LAME's extension of it).
struct LameTag {
    int encoderDelay = 0;   ///< frames before the first of the source
    int encoderPadding = 0; ///< frames after its last
    bool constantBitRate = false;

    /// A decoder adds 529 frames of its own delay.
    static constexpr int decoderDelay = 529;
    [[nodiscard]] int startPadding() const { return encoderDelay + decoderDelay; }
    [[nodiscard]] int endPadding() const { return std::max(0, encoderPadding - decoderDelay); }
};

inline constexpr std::size_t id3HeaderBytes = 10;
/// The size of the ID3v2 tag that `header` starts, itself included; none when it starts none.
[[nodiscard]] std::optional<std::int64_t> id3TagBytes(std::span<const unsigned char, id3HeaderBytes> header);
using Id3Header = std::array<unsigned char, id3HeaderBytes>;
/// Goes past the ID3v2 tags that start here; answers where they end. `visit` is called behind the header of
/// each, with the size of the tag, and may read on.
std::int64_t skipId3Tags(AVIOContext& io,
                         const std::function<void(const Id3Header& header, std::int64_t size)>& visit = {});
/// Reads the tag in the MPEG audio frame that starts here; none when there is none.
[[nodiscard]] std::optional<LameTag> readLameTag(AVIOContext& io);

} // namespace bass
