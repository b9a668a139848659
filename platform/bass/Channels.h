#pragma once

#include "platform/bass/SampleTap.h"

#include <cstdint>

namespace bass {

/// Lets `tap` hear the channel `handle`, in place of the one before; null ends it. When this returns, no call
/// of the tap before is running and none starts. The end of the channel ends it too. False on a dead handle.
///
/// Threads: any but the audio thread.
bool setTap(std::uint32_t handle, SampleTap* tap);

/// How often a playing channel had no frames for the device in time, over all channels so far.
std::uint64_t underrunCount();

} // namespace bass
