#pragma once

#include "platform/bass/source/Source.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

/// Sounds to decode, and what tests ask of the result.
namespace sounds {

/// Interleaved 16-bit PCM that is like itself at no other place or side: sweeps over a little noise.
std::vector<std::int16_t> sweep(std::size_t frames, int rate = 44100, int channels = 2);

/// Opens a file that nothing cancels; null when it cannot be opened.
std::unique_ptr<bass::Source> open(const std::string& path, bass::Format format = bass::Format::any);

struct Decoded {
    std::vector<float> samples;                                       ///< interleaved stereo
    bass::ReadResult::Status status = bass::ReadResult::Status::more; ///< the last one
    [[nodiscard]] std::int64_t frames() const { return static_cast<std::int64_t>(samples.size() / 2); }
};

/// Reads until the end, a failure, a cancellation, `most` frames, or `limit` with nothing coming.
Decoded read(bass::Source& source, std::int64_t most = INT64_MAX,
             std::chrono::seconds limit = std::chrono::seconds(30));

/// Correlation (-1..1) of interleaved stereo, `recorded` shifted by `lag` frames against `played`.
double correlation(std::span<const float> played, std::span<const float> recorded, int lag);
/// The lag within ±64 frames at which they are most alike.
int bestLag(std::span<const float> played, std::span<const float> recorded);

/// The floats that 16-bit stereo samples stand for.
std::vector<float> exactly(std::span<const std::int16_t> samples);

} // namespace sounds
