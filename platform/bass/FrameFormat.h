#pragma once

#include <array>
#include <span>

namespace bass {

/// The one format of sound inside the library: interleaved float frames, left then right.
inline constexpr int sampleRate = 44100;
inline constexpr int channelCount = 2;

using Frame = std::array<float, channelCount>;
static_assert(sizeof(Frame) == channelCount * sizeof(float));

/// The same memory as single samples, and back.
inline std::span<float> samplesOf(std::span<Frame> frames) {
    return {reinterpret_cast<float*>(frames.data()), frames.size() * channelCount};
}
inline std::span<Frame> framesOf(std::span<float> samples) {
    return {reinterpret_cast<Frame*>(samples.data()), samples.size() / channelCount};
}

} // namespace bass
