#pragma once

#include "platform/bass/SampleTap.h"

#include <cstdint>

namespace bass {

/// Lets `tap` hear a channel in the place of the tap before; null is none. When the call returns, the audio
/// thread is done with the former. The tap must outlive its time on the channel. False for a handle that is
/// not a channel.
bool setTap(std::uint32_t handle, SampleTap* tap);

} // namespace bass
