#pragma once

#include <cstdint>

namespace bass {

/// An event that is due when a frame of the device's timeline is played.
struct MixEvent {
    enum class Kind { end, slide, sinkRemoved };
    Kind kind = Kind::end;
    std::uint32_t stream = 0;      ///< Handle of the stream.
    std::uint32_t generation = 0;  ///< Voice::generation when the frame was mixed.
    std::uint32_t attribute = 0;   ///< The attribute of a slide.
    std::uint64_t slide = 0;       ///< Attribute::SlideId of a slide.
    std::uint64_t deviceFrame = 0; ///< 0: due at once.
};

} // namespace bass
