#include "tests/bass/Sounds.h"

#include "tests/support/Media.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sounds {

std::unique_ptr<bass::Source> open(const std::string& path, bass::Format format) {
    return bass::openFile(path, format, std::make_shared<bass::Cancel>()).source;
}

std::vector<std::int16_t> sweep(std::size_t frames, int rate, int channels) {
    std::vector<std::int16_t> samples = support::noise(frames, channels);
    const auto width = static_cast<std::size_t>(channels);
    for (std::size_t i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / rate;
        for (std::size_t c = 0; c < width; ++c) {
            const double turns = (300 + 100 * static_cast<double>(c) + 400 * t) * t;
            const auto tone = std::lround(8000 * std::sin(2 * std::numbers::pi * turns));
            auto& sample = samples[i * width + c];
            sample = static_cast<std::int16_t>(tone + sample / 64);
        }
    }
    return samples;
}

Decoded read(bass::Source& source, std::int64_t most, std::chrono::seconds limit) {
    Decoded decoded;
    std::vector<float> block(1000 * 2); // no multiple of any codec's frame
    auto lastSound = std::chrono::steady_clock::now();
    while (decoded.frames() < most) {
        const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(most - decoded.frames(), 1000));
        const bass::ReadResult result = source.read(std::span(block).first(wanted * 2));
        decoded.samples.insert(decoded.samples.end(), block.begin(),
                               block.begin() + static_cast<std::ptrdiff_t>(result.frames * 2));
        decoded.status = result.status;
        const auto now = std::chrono::steady_clock::now();
        if (result.frames > 0) lastSound = now;
        if (result.status != bass::ReadResult::Status::more || now - lastSound > limit) break;
    }
    return decoded;
}

double correlation(std::span<const float> played, std::span<const float> recorded, int lag) {
    constexpr std::ptrdiff_t margin = 64;
    const auto samples = static_cast<std::ptrdiff_t>(std::min(played.size(), recorded.size()));
    double both = 0, one = 0, other = 0;
    for (std::ptrdiff_t i = 2 * margin; i < samples - 2 * margin; ++i) {
        const double a = played[static_cast<std::size_t>(i)];
        const double b = recorded[static_cast<std::size_t>(i + lag * 2)];
        both += a * b;
        one += a * a;
        other += b * b;
    }
    return one > 0 && other > 0 ? both / std::sqrt(one * other) : 0;
}

int bestLag(std::span<const float> played, std::span<const float> recorded) {
    int best = 0;
    for (int lag = -64; lag <= 64; ++lag)
        if (correlation(played, recorded, lag) > correlation(played, recorded, best)) best = lag;
    return best;
}

std::vector<float> exactly(std::span<const std::int16_t> samples) {
    std::vector<float> floats(samples.size());
    std::ranges::transform(samples, floats.begin(), [](auto sample) { return sample / 32768.0F; });
    return floats;
}

} // namespace sounds
