#pragma once

#include <array>
#include <span>

namespace bass {

/// The library's internal sample format: interleaved float frames, left then right.
inline constexpr int sampleRate = 44100;
inline constexpr int channelCount = 2;

using Frame = std::array<float, channelCount>;
static_assert(sizeof(Frame) == channelCount * sizeof(float));

/// View frames as samples, and samples as frames.
inline std::span<float> samplesOf(std::span<Frame> frames) {
    return {reinterpret_cast<float*>(frames.data()), frames.size() * channelCount};
}
inline std::span<Frame> framesOf(std::span<float> samples) {
    return {reinterpret_cast<Frame*>(samples.data()), samples.size() / channelCount};
}

} // namespace bass
