#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace bass {

/// The ReplayGain 2.0 tags of a file: gains relative to -18 LUFS, and peaks. Implausible values (beyond ±51
/// dB, a negative peak, not a number) are ignored.
struct ReplayGain {
    std::optional<float> trackGain; ///< Decibels.
    std::optional<float> albumGain;
    std::optional<float> trackPeak; ///< Sample peak; 1 is full scale, which lossy formats may exceed.
    std::optional<float> albumPeak;

    /// Takes the value of a key of `replayGainKeys`, ignoring case; ignores other keys.
    void take(std::string_view key, std::string_view text);
    /// Takes missing values from `other`.
    void complete(const ReplayGain& other);
    bool operator==(const ReplayGain&) const = default;
};

/// In the order to take them: later ones replace earlier ones. The R128 keys, of Opus, are relative to -23
/// LUFS and in 1/256 dB.
inline constexpr std::array replayGainKeys = {"REPLAYGAIN_TRACK_GAIN", "REPLAYGAIN_TRACK_PEAK",
                                              "REPLAYGAIN_ALBUM_GAIN", "REPLAYGAIN_ALBUM_PEAK",
                                              "R128_TRACK_GAIN",       "R128_ALBUM_GAIN"};

enum class ReplayGainMode { off, track, album };

/// The linear gain that is applied to a stream, and the largest one that does not clip.
struct Loudness {
    float gain = 1;
    float maxGain = 1;
};

/// Each mode uses the other one's gain when its own is missing; without any the gain is 1. It is limited so
/// that the peak stays within full scale; an unknown peak counts as full scale.
[[nodiscard]] Loudness loudnessOf(const ReplayGain& tags, ReplayGainMode mode);

} // namespace bass
