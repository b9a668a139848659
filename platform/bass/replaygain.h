#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace bass {

/// What a file's tags say of its loudness, by ReplayGain 2.0: what to add to reach -18 LUFS. Values that no
/// sound can have (beyond ±51 dB, a peak below 0, no number) are ignored.
struct ReplayGain {
    std::optional<float> trackGain; ///< Decibels.
    std::optional<float> albumGain;
    std::optional<float> trackPeak; ///< Of the samples; 1 is full scale, which lossy sound may exceed.
    std::optional<float> albumPeak;

    /// Takes one of `replayGainKeys`, in any case; other keys are ignored.
    void take(std::string_view key, std::string_view text);
    /// Takes from `other` what is missing here.
    void complete(const ReplayGain& other);
    bool operator==(const ReplayGain&) const = default;
};

/// In the order in which they are to be taken: a later one replaces an earlier one. Opus' own are relative to
/// -23 LUFS, and in 1/256 dB.
inline constexpr std::array replayGainKeys = {"REPLAYGAIN_TRACK_GAIN", "REPLAYGAIN_TRACK_PEAK",
                                              "REPLAYGAIN_ALBUM_GAIN", "REPLAYGAIN_ALBUM_PEAK",
                                              "R128_TRACK_GAIN",       "R128_ALBUM_GAIN"};

enum class ReplayGainMode { off, track, album };

/// The linear gain that a stream is played with, and the largest that does not clip it.
struct Loudness {
    float gain = 1;
    float maxGain = 1;
};

/// Each mode takes the other one's gain where its own is missing; without any the gain is 1. It is limited so
/// that the peak stays within full scale; a peak that is not known may be at full scale.
[[nodiscard]] Loudness loudnessOf(const ReplayGain& tags, ReplayGainMode mode);

} // namespace bass
