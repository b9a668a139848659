#pragma once

#include "platform/bass/source/FfmpegPtr.h"

#include <cstdint>
#include <span>
#include <vector>

namespace bass {

/// Converts decoded sound to interleaved float stereo at 44100 Hz.
///
/// Samples at that rate keep their exact value (integer sample / full scale). Mono is copied to both
/// channels; more than two channels are mixed down and normalised so that they cannot clip. Other rates are
/// resampled to round(frames x 44100 / rate) frames.
class Converter {
public:
    /// Converts `count` frames of `frame` from `offset` on. False when that fails.
    [[nodiscard]] bool push(const AVFrame& frame, int offset, int count);
    /// Flushes the resampler at the end of the source.
    void finish();
    /// Sets how the number of resampled frames is rounded; the default is to the nearest.
    void setRounding(AVRounding rounding) { m_rounding = rounding; }
    /// Discards all buffered frames.
    void reset();
    /// Moves converted frames into `out`, in order; returns their number.
    [[nodiscard]] std::size_t take(std::span<float> out);

private:
    [[nodiscard]] bool configure(const AVFrame& frame);
    [[nodiscard]] bool isConfiguredFor(const AVFrame& frame) const;
    int convert(const std::uint8_t** input, int count);

    SwrContextPtr m_context;
    int m_rate = 0;
    int m_format = AV_SAMPLE_FMT_NONE;
    int m_channels = 0;
    std::uint64_t m_channelMask = 0;
    AVRounding m_rounding = AV_ROUND_NEAR_INF;
    std::int64_t m_framesIn = 0;
    std::int64_t m_framesOut = 0;
    std::vector<float> m_converted;
    std::size_t m_taken = 0; ///< floats of `m_converted` already taken
};

} // namespace bass
