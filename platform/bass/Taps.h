#pragma once

#include "platform/bass/SampleTap.h"

#include <cstdint>

namespace bass {

/// Sends the frames of a stream to `tap` from now on, instead of to its previous tap. A stream that follows
/// without a gap inherits the tap. The tap must live until `removeTap`. False for an unknown handle.
bool setTap(std::uint32_t handle, SampleTap& tap);
/// True when the stream's tap is `tap`.
bool hasTap(std::uint32_t handle, const SampleTap& tap);
/// Removes the tap from all streams. When this returns, the audio thread no longer uses it.
void removeTap(const SampleTap& tap);

} // namespace bass
