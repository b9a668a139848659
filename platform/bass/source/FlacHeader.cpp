#include "platform/bass/source/FlacHeader.h"

#include <bit>

namespace bass::flac {

std::optional<StreamInfo> parseStreamInfo(std::span<const std::uint8_t> block) {
    constexpr std::size_t blockBytes = 34;
    if (block.size() < blockBytes) return std::nullopt;
    const int least = block[0] << 8 | block[1];
    const int most = block[2] << 8 | block[3];
    StreamInfo info;
    info.blockSize = least == most ? most : 0;
    info.totalSamples = block[13] & 0x0f;
    for (std::size_t i = 14; i < 18; ++i)
        info.totalSamples = info.totalSamples << 8 | block[i];
    return info;
}

std::optional<std::int64_t> firstSample(std::span<const std::uint8_t> packet, const StreamInfo& info) {
    constexpr std::size_t numberAt = 4;
    constexpr std::size_t maxNumberBytes = 7;
    if (packet.size() < numberAt + maxNumberBytes || packet[0] != 0xff || (packet[1] & 0xfe) != 0xf8)
        return std::nullopt;
    // Coded like UTF-8, with up to seven bytes.
    const int ones = std::countl_one(packet[numberAt]);
    if (ones == 1 || ones == 8) return std::nullopt;
    std::int64_t number = packet[numberAt] & (0x7f >> ones);
    for (int i = 1; i < ones; ++i)
        number = number << 6 | (packet[numberAt + static_cast<std::size_t>(i)] & 0x3f);
    const bool countsSamples = packet[1] & 1;
    if (countsSamples) return number;
    if (info.blockSize == 0) return std::nullopt;
    return number * info.blockSize;
}

} // namespace bass::flac
