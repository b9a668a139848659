#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// All that a local file says of its sound and its tags. What it does not say is 0 or empty.
struct FileDetails {
    std::string format; ///< Its name, like "FLAC".
    int sampleRate = 0; ///< Hertz.
    int channels = 0;
    int bitsPerSample = 0;          ///< Of lossless formats.
    int bitRate = 0;                ///< Kilobits a second, on average.
    double length = 0;              ///< Seconds.
    std::optional<float> trackGain; ///< Decibels to ReplayGain's reference of -18 LUFS.
    std::optional<float> albumGain;
    std::uint64_t size = 0;
    /// Names like "Title", and texts in UTF-8; in the order in which they are to be shown.
    std::vector<std::pair<std::string, std::string>> tags;
};

/// Nothing for an address, and for a file that cannot be read.
///
/// Threads: any; it waits for the file.
std::optional<FileDetails> readFileDetails(const std::string& source);

/// As the program that reads tags sends it. Nothing is sent as an empty message.
std::string packed(const FileDetails& details);
