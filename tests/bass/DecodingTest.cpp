#include "platform/bass/source/Source.h"

#include "tests/bass/Sounds.h"
#include "tests/support/Media.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace {

using bass::Format;
using bass::ReadResult;
namespace fs = std::filesystem;

/// One way to make a file of a sound. In `encode`, IN and OUT stand for the paths.
struct Encoding {
    const char* name;
    const char* suffix;
    std::vector<std::string> encode;
    int rate = 44100;
    int channels = 2;
    bool lossless = true;
    bool exactLength = true;
    /// Decodes the same way twice; FFmpeg's AAC decoder fills noise bands at random.
    bool repeatable = true;
};

void PrintTo(const Encoding& encoding, std::ostream* out) {
    *out << encoding.name;
}

std::vector<std::string> ffmpeg(std::vector<std::string> options) {
    std::vector<std::string> command = {"ffmpeg", "-v", "error", "-y", "-i", "IN"};
    command.insert(command.end(), options.begin(), options.end());
    command.push_back("OUT");
    return command;
}

constexpr std::size_t sourceFrames = 150'001; // no multiple of any codec's frame

const std::vector<std::int16_t>& soundOf(const Encoding& encoding) {
    static std::vector<std::int16_t> sound;
    sound = sounds::sweep(sourceFrames, encoding.rate, encoding.channels);
    return sound;
}

fs::path encode(const Encoding& encoding) {
    return support::encode(encoding.name + std::string(encoding.suffix), soundOf(encoding), encoding.rate,
                           encoding.channels, encoding.encode);
}

std::int64_t framesAt44100(int rate) {
    return std::llround(static_cast<double>(sourceFrames) * bass::sampleRate / rate);
}

class EveryEncoder : public testing::TestWithParam<Encoding> {};

TEST_P(EveryEncoder, DecodesAndSeeksToTheSourcesFrames) {
    const Encoding& encoding = GetParam();
    const fs::path path = encode(encoding);
    const auto source = sounds::open(path);
    ASSERT_TRUE(source);
    const sounds::Decoded linear = sounds::read(*source);
    EXPECT_EQ(linear.status, ReadResult::Status::end);

    const std::int64_t frames = framesAt44100(encoding.rate);
    ASSERT_TRUE(source->lengthFrames());
    if (encoding.exactLength) {
        EXPECT_EQ(linear.frames(), frames);
        EXPECT_EQ(*source->lengthFrames(), frames);
        if (encoding.rate == bass::sampleRate) {
            std::vector<float> played;
            for (const float sample : sounds::exactly(soundOf(encoding))) // mono: both sides, at full level
                played.insert(played.end(), encoding.channels == 1 ? 2 : 1, sample);
            EXPECT_TRUE(!encoding.lossless || linear.samples == played);
            EXPECT_EQ(sounds::bestLag(played, linear.samples), 0);
            EXPECT_GT(sounds::correlation(played, linear.samples, 0), 0.97);
        }
    } else {
        EXPECT_NEAR(static_cast<double>(*source->lengthFrames()), static_cast<double>(frames), frames * 0.05);
    }

    // Forwards, backwards, to the first and the last frames.
    const std::int64_t end = linear.frames();
    for (const std::int64_t target : {end * 2 / 3, 317L, 0L, end - 4200, end / 2, end / 2 - 1}) {
        SCOPED_TRACE(target);
        ASSERT_TRUE(source->seek(target));
        const sounds::Decoded part = sounds::read(*source, 4000);
        ASSERT_EQ(part.frames(), 4000);
        const std::span expected =
            std::span(linear.samples).subspan(static_cast<std::size_t>(target) * 2, part.samples.size());
        EXPECT_EQ(sounds::bestLag(expected, part.samples), 0);
        float difference = 0;
        for (std::size_t i = 0; i < part.samples.size(); ++i)
            difference = std::max(difference, std::abs(expected[i] - part.samples[i]));
        const bool sameBits = encoding.lossless && encoding.rate == bass::sampleRate;
        EXPECT_LE(difference, sameBits ? 0.0F : encoding.repeatable ? 2e-4F : 0.05F);
    }
    ASSERT_TRUE(source->seek(end / 2));
    static_cast<void>(sounds::read(*source, 4000));
    ASSERT_TRUE(source->seek(end - 1));
    EXPECT_LE(sounds::read(*source).frames(), encoding.exactLength ? 1 : 2);
    ASSERT_TRUE(source->seek(linear.frames() + 1'000'000));
    EXPECT_EQ(sounds::read(*source, 100).status, ReadResult::Status::end);
}

const std::vector<Encoding> encodings = {
    {"wav", ".wav", ffmpeg({"-c:a", "copy"})},
    {"flac", ".flac", {"flac", "-s", "-f", "IN", "-o", "OUT"}},
    {"oggflac", ".oga", {"flac", "-s", "-f", "--ogg", "IN", "-o", "OUT"}},
    {"monoflac", ".flac", {"flac", "-s", "-f", "IN", "-o", "OUT"}, 44100, 1},
    {"flac48", ".flac", {"flac", "-s", "-f", "IN", "-o", "OUT"}, 48000},
    {"flac96", ".flac", {"flac", "-s", "-f", "IN", "-o", "OUT"}, 96000},
    {"flac22", ".flac", {"flac", "-s", "-f", "IN", "-o", "OUT"}, 22050, 1},
    {"wavpack", ".wv", {"wavpack", "-q", "-y", "IN", "-o", "OUT"}},
    {"alac", ".m4a", ffmpeg({"-c:a", "alac"})},
    {"aiff", ".aiff", ffmpeg({"-c:a", "pcm_s16be"})},
    {"tta", ".tta", ffmpeg({"-c:a", "tta"})},
    {"vorbis", ".ogg", {"oggenc", "-Q", "-q", "6", "IN", "-o", "OUT"}, 44100, 2, false},
    {"opus", ".opus", {"opusenc", "--quiet", "IN", "OUT"}, 44100, 2, false},
    {"opus48", ".opus", {"opusenc", "--quiet", "IN", "OUT"}, 48000, 2, false},
    {"aac", ".m4a", ffmpeg({"-c:a", "aac", "-b:a", "192k"}), 44100, 2, false, true, false},
    {"mp3vbr", ".mp3", {"lame", "--quiet", "-V2", "IN", "OUT"}, 44100, 2, false},
    {"mp3cbr", ".mp3", {"lame", "--quiet", "-b", "192", "IN", "OUT"}, 44100, 2, false},
    {"mp3notag", ".mp3", {"lame", "--quiet", "-t", "-b", "192", "IN", "OUT"}, 44100, 2, false, false},
    {"adts", ".aac", ffmpeg({"-c:a", "aac", "-b:a", "192k"}), 44100, 2, false, false, false},
    {"matroska", ".mka", ffmpeg({"-c:a", "flac"})},
};

INSTANTIATE_TEST_SUITE_P(Files, EveryEncoder, testing::ValuesIn(encodings),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Decoding, KeepsEveryBitOf24) {
    std::string raw;
    std::vector<float> expected;
    for (std::int32_t i = 0; i < 30'000; ++i) {
        const std::int32_t value = static_cast<std::int32_t>(i * 559'241L % 8'388'608) * (i % 2 ? 1 : -1);
        for (int byte = 0; byte < 3; ++byte)
            raw.push_back(static_cast<char>(value >> (8 * byte) & 0xff));
        expected.push_back(static_cast<float>(value) / 8'388'608.0F);
    }
    const fs::path rawPath = support::scratch() / "deep.raw", flac = support::scratch() / "deep.flac";
    support::writeFile(rawPath, raw);
    support::run({"flac", "-s", "-f", "--force-raw-format", "--endian=little", "--sign=signed",
                  "--channels=2", "--bps=24", "--sample-rate=44100", rawPath, "-o", flac});
    const auto source = sounds::open(flac, Format::flac);
    ASSERT_TRUE(source);
    EXPECT_TRUE(sounds::read(*source).samples == expected);
}

TEST(Decoding, MixesSurroundWithoutClipping) {
    std::vector<std::int16_t> loud(6 * 20'000, 32'767);
    const fs::path wav = support::writeWav(support::scratch() / "surround.wav", loud, 44100, 6);
    const auto source = sounds::open(wav);
    ASSERT_TRUE(source);
    const sounds::Decoded decoded = sounds::read(*source);
    EXPECT_EQ(decoded.frames(), 20'000);
    const auto [least, most] = std::ranges::minmax(decoded.samples);
    EXPECT_GT(least, 0.9F);
    EXPECT_LE(most, 1.0F);
}

TEST(Decoding, DetectsTheFormatByContent) {
    const auto sound = sounds::sweep(20'000);
    const std::pair<fs::path, Format> files[] = {
        {support::encode("named.flac", sound), Format::flac},
        {support::encode("named.oga", sound, 44100, 2, encodings[2].encode), Format::flac},
        {support::encode("named.opus", sound), Format::opus},
        {support::encode("named.wv", sound), Format::wavpack}};
    for (const auto& [path, accepted] : files) {
        const fs::path misnamed = support::scratch() / "concat:a|b.mp3";
        fs::copy_file(path, misnamed, fs::copy_options::overwrite_existing);
        for (const Format format : {Format::flac, Format::ape, Format::opus, Format::wavpack})
            EXPECT_EQ(sounds::open(misnamed, format) != nullptr, format == accepted) << path;
        EXPECT_TRUE(sounds::open(misnamed));
    }
}

TEST(Decoding, FindsTheSoundAfterALongTag) {
    // A cover picture of two megabytes, more than any probe reads.
    const int size = 2 << 20;
    std::string tag = "ID3\x03";
    tag += std::string("\0\0", 2);
    for (int shift = 21; shift >= 0; shift -= 7)
        tag.push_back(static_cast<char>(size >> shift & 0x7f));
    tag.append(size, '\0');
    for (const Encoding& encoding : {encodings[15], encodings[10]}) {
        const fs::path tagged = support::scratch() / "tagged";
        support::writeFile(tagged, tag + support::readFile(encode(encoding)));
        const auto source = sounds::open(tagged);
        ASSERT_TRUE(source) << encoding.name;
        EXPECT_EQ(source->lengthFrames(), framesAt44100(encoding.rate));
        EXPECT_EQ(sounds::read(*source).frames(), framesAt44100(encoding.rate));
    }
}

} // namespace
