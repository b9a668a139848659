#pragma once

#include "platform/bass/FrameFormat.h"

#include <array>
#include <span>

namespace bass {

inline constexpr std::size_t fftFrames = 1024;

/// Magnitudes of the first 512 bins of fftFrames frames: channels averaged, Hann window, scaled so that a
/// full-scale sine at a bin's centre gives 1.0.
std::array<float, fftFrames / 2> magnitudes(std::span<const Frame> frames);

} // namespace bass
