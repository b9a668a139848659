#include "core/player/TulSpectrum.h"

#include <algorithm>
#include <cmath>

namespace {

std::int32_t barHeight(float peak) {
    const double height = std::sqrt(static_cast<double>(peak)) * 3.0 * 24.0 - 4.0;
    const auto points = static_cast<std::int32_t>(std::min(height, 24.0));
    return std::max(points, 1) + 1;
}

} // namespace

TulSpectrum spectrumBars(std::span<const float, 512> magnitudes) {
    TulSpectrum bars{};
    int low = 0;
    for (int bar = 0; bar < static_cast<int>(bars.size()); ++bar) {
        const int high = std::max(static_cast<int>(std::pow(2.0, bar * 10.0 * 0.125)), low + 1);
        float peak = 0;
        for (int bin = low + 1; bin <= high; ++bin)
            peak = std::max(peak, magnitudes[static_cast<std::size_t>(bin)]);
        bars[static_cast<std::size_t>(bar)] = barHeight(peak);
        low = high;
    }
    return bars;
}
