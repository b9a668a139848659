#pragma once

#include "platform/bass/FrameFormat.h"

#include <span>

namespace bass {

/// Receives the frames that a stream plays, before gain and pan, each frame once.
class SampleTap {
public:
    virtual ~SampleTap() = default;
    /// Called on the audio thread: must not lock, allocate or block.
    virtual void tapped(std::span<const Frame> frames) noexcept = 0;
};

} // namespace bass
