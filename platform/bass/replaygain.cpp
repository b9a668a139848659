#include "platform/bass/replaygain.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace bass {
namespace {

/// The range of ReplayGain 1.0's binary format.
constexpr float maxDecibels = 51;
/// 40 dB above full scale. Some programs write 16-bit integers, which are ignored.
constexpr float maxPeak = 100;
/// From the reference of Opus, -23 LUFS, to that of ReplayGain, -18 LUFS.
constexpr float opusReferenceDecibels = 5;
constexpr float opusUnitsPerDecibel = 256;

char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool equalIgnoringCase(std::string_view one, std::string_view other) {
    return std::ranges::equal(one, other, {}, lower, lower);
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks(" \t\r\n\0", 5);
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// Parses a text like "-7.2 dB", "+1,5dB" or "0.98", independent of the locale.
std::optional<float> parseNumber(std::string_view text) {
    constexpr std::size_t maxLength = 32;
    std::string digits(trimmed(text).substr(0, maxLength));
    std::ranges::replace(digits, ',', '.');
    if (digits.starts_with('+')) digits.erase(0, 1);
    float number = 0;
    const char* const end = digits.data() + digits.size();
    const auto parsed = std::from_chars(digits.data(), end, number);
    if (parsed.ec != std::errc() || !std::isfinite(number)) return std::nullopt;
    const std::string_view unit = trimmed({parsed.ptr, end});
    if (!unit.empty() && !equalIgnoringCase(unit, "dB")) return std::nullopt;
    return number;
}

std::optional<float> gainOf(std::string_view text) {
    const auto decibels = parseNumber(text);
    return decibels && std::abs(*decibels) <= maxDecibels ? decibels : std::nullopt;
}

std::optional<float> opusGainOf(std::string_view text) {
    const auto units = parseNumber(text);
    if (!units) return std::nullopt;
    const float decibels = *units / opusUnitsPerDecibel + opusReferenceDecibels;
    return std::abs(decibels) <= maxDecibels ? std::optional(decibels) : std::nullopt;
}

std::optional<float> peakOf(std::string_view text) {
    const auto peak = parseNumber(text);
    return peak && *peak > 0 && *peak <= maxPeak ? peak : std::nullopt;
}

} // namespace

void ReplayGain::take(std::string_view key, std::string_view text) {
    const struct {
        std::optional<float>& value;
        std::optional<float> (*parse)(std::string_view);
    } fields[] = {{trackGain, gainOf}, {trackPeak, peakOf},     {albumGain, gainOf},
                  {albumPeak, peakOf}, {trackGain, opusGainOf}, {albumGain, opusGainOf}};
    static_assert(std::size(fields) == replayGainKeys.size());
    const auto found =
        std::ranges::find_if(replayGainKeys, [&](auto name) { return equalIgnoringCase(name, key); });
    if (found == replayGainKeys.end()) return;
    const auto& field = fields[found - replayGainKeys.begin()];
    if (const auto value = field.parse(text)) field.value = value;
}

void ReplayGain::complete(const ReplayGain& other) {
    for (const auto field :
         {&ReplayGain::trackGain, &ReplayGain::albumGain, &ReplayGain::trackPeak, &ReplayGain::albumPeak})
        if (!(this->*field)) this->*field = other.*field;
}

Loudness loudnessOf(const ReplayGain& tags, ReplayGainMode mode) {
    const bool byAlbum = tags.albumGain && (mode == ReplayGainMode::album || !tags.trackGain);
    const auto gain = byAlbum ? tags.albumGain : tags.trackGain;
    if (mode == ReplayGainMode::off || !gain) return {};
    const auto& peak = byAlbum ? tags.albumPeak : tags.trackPeak;
    const auto& otherPeak = byAlbum ? tags.trackPeak : tags.albumPeak;
    const float maxGain = 1 / peak.value_or(otherPeak.value_or(1.0F));
    return {std::min(std::pow(10.0F, *gain / 20), maxGain), maxGain};
}

} // namespace bass
