#pragma once

namespace bass {

/// The one format of sound inside the library: interleaved float frames, left then right.
inline constexpr int sampleRate = 44100;
inline constexpr int channelCount = 2;

} // namespace bass
