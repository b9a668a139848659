#include "tests/support/Media.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <numbers>
#include <random>
#include <stdexcept>
#include <unistd.h>

namespace support {
namespace {

struct ScratchFolder {
    std::filesystem::path path;
    ScratchFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tulplayer-test-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no scratch folder");
        path = name;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

void putLittleEndian(std::string& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out.push_back(static_cast<char>(value >> (8 * i) & 0xff));
}

const std::map<std::string, std::vector<std::string>> encoders = {
    {".aiff", {"ffmpeg", "-v", "error", "-y", "-i", "IN", "OUT"}},
    {".flac", {"flac", "-s", "-f", "IN", "-o", "OUT"}},
    {".m4a", {"ffmpeg", "-v", "error", "-y", "-i", "IN", "-c:a", "aac", "OUT"}},
    {".mp3", {"lame", "--quiet", "IN", "OUT"}},
    {".ogg", {"oggenc", "-Q", "IN", "-o", "OUT"}},
    {".opus", {"opusenc", "--quiet", "IN", "OUT"}},
    {".wav", {"cp", "IN", "OUT"}},
    {".wv", {"wavpack", "-q", "-y", "IN", "-o", "OUT"}},
};

} // namespace

const std::filesystem::path& scratch() {
    static const ScratchFolder folder;
    return folder.path;
}

std::vector<std::int16_t> sine(double hertz, std::size_t frames, int rate, int channels, double amplitude) {
    std::vector<std::int16_t> samples;
    samples.reserve(frames * static_cast<std::size_t>(channels));
    for (std::size_t i = 0; i < frames; ++i) {
        const double phase = 2 * std::numbers::pi * hertz * static_cast<double>(i) / rate;
        const auto value = static_cast<std::int16_t>(std::lround(amplitude * 32767 * std::sin(phase)));
        samples.insert(samples.end(), static_cast<std::size_t>(channels), value);
    }
    return samples;
}

std::vector<std::int16_t> noise(std::size_t frames, int channels, std::uint32_t seed) {
    std::mt19937 generator(seed);
    std::vector<std::int16_t> samples(frames * static_cast<std::size_t>(channels));
    for (auto& sample : samples)
        sample = static_cast<std::int16_t>(generator() >> 16);
    return samples;
}

std::filesystem::path writeWav(const std::filesystem::path& path, std::span<const std::int16_t> interleaved,
                               int rate, int channels) {
    const auto dataBytes = static_cast<std::uint32_t>(interleaved.size_bytes());
    std::string bytes = "RIFF";
    putLittleEndian(bytes, 36 + dataBytes, 4);
    bytes += "WAVEfmt ";
    putLittleEndian(bytes, 16, 4);
    putLittleEndian(bytes, 1, 2);
    putLittleEndian(bytes, static_cast<std::uint32_t>(channels), 2);
    putLittleEndian(bytes, static_cast<std::uint32_t>(rate), 4);
    putLittleEndian(bytes, static_cast<std::uint32_t>(rate * channels * 2), 4);
    putLittleEndian(bytes, static_cast<std::uint32_t>(channels * 2), 2);
    putLittleEndian(bytes, 16, 2);
    bytes += "data";
    putLittleEndian(bytes, dataBytes, 4);
    bytes.append(reinterpret_cast<const char*>(interleaved.data()), dataBytes);
    writeFile(path, bytes);
    return path;
}

std::filesystem::path encode(const std::string& name, std::span<const std::int16_t> interleaved, int rate,
                             int channels, std::vector<std::string> command) {
    const std::filesystem::path out = scratch() / name;
    if (command.empty()) command = encoders.at(out.extension());
    const auto wav = writeWav(scratch() / (name + "-in.wav"), interleaved, rate, channels);
    std::ranges::replace(command, "IN", wav.string());
    std::ranges::replace(command, "OUT", out.string());
    run(command);
    return out;
}

void writeFile(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush()) throw std::runtime_error("cannot write " + path.string());
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(in), {}};
}

} // namespace support
