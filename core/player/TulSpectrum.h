#pragma once

#include <array>
#include <cstdint>
#include <span>

/// Heights of the eight spectrum bars in points, lowest band first: 2 to 25 while a stream plays, else 1.
using TulSpectrum = std::array<std::int32_t, 8>;

inline constexpr std::int32_t idleSpectrumHeight = 1;

/// The bars for the magnitudes of a 1024-frame FFT. Each shows the largest magnitude of its band; the bands'
/// edges are a factor of 2^1.25 apart, at 44100 Hz from 43 Hz to 18.5 kHz.
TulSpectrum spectrumBars(std::span<const float, 512> magnitudes);
