#pragma once

#include <cstdint>
#include <optional>
#include <span>

/// Positions and lengths in FLAC's own headers, in any container (RFC 9639, 8.2 and 9.1).
namespace bass::flac {

struct StreamInfo {
    int blockSize = 0;             ///< 0 when blocks differ in size
    std::int64_t totalSamples = 0; ///< 0 when unknown
};

[[nodiscard]] std::optional<StreamInfo> parseStreamInfo(std::span<const std::uint8_t> block);
/// The number of the first sample in the frame in `packet`; none when unknown.
[[nodiscard]] std::optional<std::int64_t> firstSample(std::span<const std::uint8_t> packet,
                                                      const StreamInfo& info);

} // namespace bass::flac
