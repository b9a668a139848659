#pragma once

#include <cstdint>

namespace bass {

/// Something that happens when a frame of the device's timeline is played.
struct MixEvent {
    enum class Kind { end, slide, sinkRemoved };
    Kind kind = Kind::end;
    std::uint32_t stream = 0;      ///< The handle.
    std::uint32_t generation = 0;  ///< Of the stream's voice, when the frame was mixed.
    std::uint32_t attribute = 0;   ///< Of a slide.
    std::uint64_t slide = 0;       ///< Which one: Attribute::SlideId.
    std::uint64_t deviceFrame = 0; ///< 0: due at once.
};

} // namespace bass
