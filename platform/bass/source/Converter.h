#pragma once

#include "platform/bass/source/FfmpegPtr.h"

#include <cstdint>
#include <span>
#include <vector>

namespace bass {

/// Any decoded sound as interleaved float stereo at 44100 Hz.
///
/// Samples of that rate keep their exact value (integer sample / full scale). One channel goes to both sides
/// as it is; more than two are mixed down and normalised so that they cannot clip. Other rates are resampled
/// to round(frames x 44100 / rate) frames.
class Converter {
public:
    /// Takes `count` frames of `frame` from `offset` on. False when they cannot be converted.
    [[nodiscard]] bool push(const AVFrame& frame, int offset, int count);
    /// No more comes: gives out what the resampler still holds.
    void finish();
    /// How the count of resampled frames is rounded; to the nearest if nothing is said.
    void setRounding(AVRounding rounding) { m_rounding = rounding; }
    /// Forgets everything; the next sound starts anew.
    void reset();
    /// Moves converted frames into `out`, first ones first; answers how many.
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
    std::size_t m_taken = 0; ///< floats of `m_converted` already given out
};

} // namespace bass
