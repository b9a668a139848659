#include "platform/bass/source/Source.h"

#include "tests/bass/Sounds.h"
#include "tests/support/Media.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using bass::Failure;
using bass::Format;
using Status = bass::ReadResult::Status;
namespace fs = std::filesystem;

fs::path scratchFile(const std::string& name, const std::string& bytes) {
    const fs::path path = support::scratch() / name;
    support::writeFile(path, bytes);
    return path;
}

std::string randomBytes(std::size_t count) {
    std::mt19937 generator(7);
    std::string bytes(count, '\0');
    std::ranges::generate(bytes, [&] { return static_cast<char>(generator()); });
    return bytes;
}

std::string wavFile() {
    return support::readFile(support::writeWav(support::scratch() / "in.wav", sounds::sweep(60'000)));
}

/// The content of a sound file by the encoder of each format.
std::map<std::string, std::string> soundFiles() {
    std::map<std::string, std::string> files = {{"wav", wavFile()}};
    for (const std::string format : {"flac", "ogg", "opus", "mp3", "wv", "m4a"})
        files[format] = support::readFile(support::encode("bad." + format, sounds::sweep(60'000)));
    return files;
}

TEST(BadInput, IsRefused) {
    const fs::path fifo = support::scratch() / "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const fs::path sound = support::writeWav(support::scratch() / "sound.wav", sounds::sweep(1000));
    const std::string list = "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nfile://" + sound.string() + "\n";
    const struct {
        std::string path;
        Failure failure;
    } cases[] = {
        {scratchFile("empty.flac", ""), Failure::noAudio},
        {scratchFile("garbage.wav", randomBytes(100'000)), Failure::noAudio},
        {scratchFile("text.txt", std::string(5000, 'a')), Failure::noAudio},
        {scratchFile("list.mp3", list + "#EXT-X-ENDLIST\n"), Failure::noAudio},
        {scratchFile("list.ffconcat", "ffconcat version 1.0\nfile '" + sound.string() + "'\n"),
         Failure::noAudio},
        {support::scratch(), Failure::unreadable},
        {support::scratch() / "absent.flac", Failure::notFound},
        {support::scratch() / "sound.wav" / "within", Failure::notFound},
        {fifo, Failure::unreadable},
        {"/dev/zero", Failure::unreadable},
        {"file:" + sound.string(), Failure::notFound},
        {sound.string() + std::string("\0.wav", 5), Failure::notFound},
        {"", Failure::notFound},
    };
    for (const auto& [path, failure] : cases) {
        const bass::OpenedSource opened = bass::openFile(path, Format::any, std::make_shared<bass::Cancel>());
        EXPECT_FALSE(opened.source) << path;
        EXPECT_EQ(opened.failure, failure) << path;
    }

    if (geteuid() != 0) {
        ASSERT_EQ(chmod(sound.c_str(), 0), 0);
        const auto opened = bass::openFile(sound, Format::any, std::make_shared<bass::Cancel>());
        EXPECT_EQ(opened.failure, Failure::unreadable);
    }
}

TEST(BadInput, WithExcessiveHeaderValuesIsRejectedOrEndsEarly) {
    const std::string wav = wavFile();
    struct {
        const char* what;
        std::size_t offset;
        std::string bytes;
    } const faults[] = {
        {"rate 0", 24, std::string(4, '\0')},     {"rate 1", 24, std::string("\1\0\0\0", 4)},
        {"rate 4 GHz", 24, "\xff\xff\xff\xff"},   {"no channels", 22, std::string(2, '\0')},
        {"65535 channels", 22, "\xff\xff"},       {"block size 0", 32, std::string(2, '\0')},
        {"4 GB of data", 40, "\xfe\xff\xff\xff"}, {"a chunk of 4 GB", 16, "\xff\xff\xff\xff"},
        {"no bits", 34, std::string(2, '\0')},    {"an unknown codec", 20, "\x77\x77"},
    };
    for (const auto& [what, offset, bytes] : faults) {
        SCOPED_TRACE(what);
        std::string broken = wav;
        broken.replace(offset, bytes.size(), bytes);
        const auto source = sounds::open(scratchFile("absurd.wav", broken));
        if (!source) continue;
        EXPECT_LE(sounds::read(*source, 10'000'000).frames(), 1'000'000);
    }
}

TEST(BadInput, TruncatedOrDamagedEndsEarly) {
    std::mt19937 generator(3);
    for (const auto& [format, whole] : soundFiles()) {
        for (int variant = 0; variant < 24; ++variant) {
            SCOPED_TRACE(format + " variant " + std::to_string(variant));
            std::string broken = whole;
            if (variant % 2)
                broken.resize(generator() % whole.size());
            else
                for (int i = 0; i < 1 << variant / 3; ++i)
                    broken[generator() % broken.size()] = static_cast<char>(generator());
            const auto source = sounds::open(scratchFile("broken", broken));
            if (!source) continue;
            EXPECT_LE(sounds::read(*source, 10'000'000).frames(), 1'000'000);
            static_cast<void>(source->seek(30'000));
            static_cast<void>(sounds::read(*source, 5000));
            static_cast<void>(source->seek(100));
            EXPECT_LE(sounds::read(*source, 10'000'000).frames(), 1'000'000);
        }
    }
}

TEST(BadInput, TruncatedWhilePlayingEnds) {
    for (const auto& [format, whole] : soundFiles()) {
        SCOPED_TRACE(format);
        const fs::path path = scratchFile("cut", whole);
        const auto source = sounds::open(path);
        ASSERT_TRUE(source);
        const auto length = source->lengthFrames();
        EXPECT_EQ(sounds::read(*source, 1000).frames(), 1000);
        fs::resize_file(path, 0);
        for (const std::int64_t frame : {50'000, 100}) {
            static_cast<void>(source->seek(frame));
            EXPECT_LE(sounds::read(*source).frames(), 60'000);
        }
        EXPECT_EQ(source->lengthFrames(), length);
    }
}

TEST(BadInput, ACancelledSourceContinuesAndAClosedOneNever) {
    const auto samples = sounds::sweep(200'000);
    const auto cancel = std::make_shared<bass::Cancel>();
    const auto source =
        bass::openFile(support::encode("cancelled.flac", samples), Format::any, cancel).source;
    ASSERT_TRUE(source);
    const std::vector<float> played = sounds::exactly(samples);
    sounds::Decoded all = sounds::read(*source, 1000);
    for (const bool seeks : {false, true, false}) {
        cancel->cancel();
        EXPECT_EQ(sounds::read(*source).status, Status::cancelled);
        if (seeks) {
            EXPECT_FALSE(source->seek(100'000)); // and stays where it is
        }
        cancel->clear();
        const sounds::Decoded more = sounds::read(*source, 50'000);
        all.samples.insert(all.samples.end(), more.samples.begin(), more.samples.end());
    }
    ASSERT_EQ(all.frames(), 151'000);
    EXPECT_TRUE(std::equal(all.samples.begin(), all.samples.end(), played.begin()));
    cancel->close();
    cancel->clear();
    EXPECT_EQ(sounds::read(*source).frames(), 0);
    EXPECT_EQ(sounds::read(*source).status, Status::cancelled);
}

} // namespace
