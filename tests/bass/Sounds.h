#pragma once

#include "platform/bass/source/Source.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

/// Test sounds, and comparisons of decoded samples.
namespace sounds {

/// Interleaved 16-bit PCM without repetition in time or between channels: sweeps over a little noise.
std::vector<std::int16_t> sweep(std::size_t frames, int rate = 44100, int channels = 2);

/// Opens a file; null when that fails.
std::unique_ptr<bass::Source> open(const std::string& path, bass::Format format = bass::Format::any);

struct Decoded {
    std::vector<float> samples;                                       ///< interleaved stereo
    bass::ReadResult::Status status = bass::ReadResult::Status::more; ///< the last one
    [[nodiscard]] std::int64_t frames() const { return static_cast<std::int64_t>(samples.size() / 2); }
};

/// Reads until the end, a failure, a cancellation, `most` frames, or `limit` without a frame.
Decoded read(bass::Source& source, std::int64_t most = INT64_MAX,
             std::chrono::seconds limit = std::chrono::seconds(30));

/// Correlation (-1..1) of interleaved stereo, `recorded` shifted by `lag` frames against `played`.
double correlation(std::span<const float> played, std::span<const float> recorded, int lag);
/// The lag within ±64 frames with the highest correlation.
int bestLag(std::span<const float> played, std::span<const float> recorded);

/// Converts 16-bit samples to floats.
std::vector<float> exactly(std::span<const std::int16_t> samples);

} // namespace sounds
