#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Audio properties and tags of a local file. Unknown ones are 0 or empty.
struct FileDetails {
    std::string format; ///< A name like "FLAC".
    int sampleRate = 0; ///< Hertz.
    int channels = 0;
    int bitsPerSample = 0;          ///< Of lossless formats; else 0.
    int bitRate = 0;                ///< Kilobits a second, on average.
    double length = 0;              ///< Seconds.
    std::optional<float> trackGain; ///< ReplayGain in decibels, relative to -18 LUFS.
    std::optional<float> albumGain;
    std::uint64_t size = 0;
    /// Names like "Title" with their texts in UTF-8, in display order.
    std::vector<std::pair<std::string, std::string>> tags;
};

/// None for an address, and for a file that cannot be read.
///
/// Threads: any; blocks on the file.
std::optional<FileDetails> readFileDetails(const std::string& source);

/// The message in which tulplayer-tags sends the details. It sends an empty one for none.
std::string packed(const FileDetails& details);
