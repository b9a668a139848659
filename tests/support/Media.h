#pragma once

#include "tests/support/Child.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

/// Test media, made with command-line encoders.
namespace support {

/// A temporary folder of this process, removed at exit.
const std::filesystem::path& scratch();

/// Interleaved 16-bit PCM: a sine of `hertz` at `amplitude` (0..1) in every channel.
std::vector<std::int16_t> sine(double hertz, std::size_t frames, int rate = 44100, int channels = 2,
                               double amplitude = 0.5);
/// Interleaved 16-bit white noise, the same for the same seed.
std::vector<std::int16_t> noise(std::size_t frames, int channels = 2, std::uint32_t seed = 1);

/// Writes a canonical 16-bit RIFF WAVE file and returns its path.
std::filesystem::path writeWav(const std::filesystem::path& path, std::span<const std::int16_t> interleaved,
                               int rate = 44100, int channels = 2);

/// Makes a file of samples and returns its path, in the scratch folder. `command` is the encoder's, where IN
/// and OUT stand for the paths; without one, that of the format which `name` ends in.
std::filesystem::path encode(const std::string& name, std::span<const std::int16_t> interleaved,
                             int rate = 44100, int channels = 2, std::vector<std::string> command = {});

void writeFile(const std::filesystem::path& path, const std::string& bytes);
std::string readFile(const std::filesystem::path& path);

} // namespace support
