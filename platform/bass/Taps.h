#pragma once

#include "platform/bass/SampleTap.h"

#include <cstdint>

namespace bass {

/// Lets `tap` get the frames of a stream from now on, in the place of the stream's tap before; a stream that
/// follows it without a gap inherits the tap. The tap must outlive that: until `removeTap`. False for a
/// handle that is not a stream.
bool setTap(std::uint32_t handle, SampleTap& tap);
/// Whether `tap` gets the frames of the stream already.
bool hasTap(std::uint32_t handle, const SampleTap& tap);
/// Takes it from every stream. When the call returns, the audio thread is done with it.
void removeTap(const SampleTap& tap);

} // namespace bass
