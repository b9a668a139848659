#pragma once

#include <span>

namespace bass {

/// Hears what a channel plays: its decoded frames before gain and pan, frame for frame as the mixer takes
/// them.
class SampleTap {
public:
    virtual ~SampleTap() = default;
    /// Interleaved stereo at the library's rate. Called on the audio thread: must not lock, allocate or
    /// block.
    virtual void tapped(std::span<const float> frames) noexcept = 0;
};

} // namespace bass
