// Channels, mixer and syncs on outputs without a device. CTest runs each case in its own process, because the
// library opens its output once.

#include "platform/bass/Fft.h"
#include "platform/bass/Library.h"
#include "platform/bass/Taps.h"
#include "platform/bass/bass.h"
#include "tests/bass/LibraryEnd.h"
#include "tests/bass/Sounds.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <thread>

namespace {

using support::waitFor;
using Samples = std::vector<std::int16_t>;

constexpr QWORD bytesPerFrame = 8;
constexpr std::ptrdiff_t edge = 2 * 220; ///< Samples of the ramp over a discontinuity.

std::filesystem::path recordingFile() {
    return support::scratch() / "recorded.wav";
}

void open(const std::string& output) {
    setenv("TUL_AUDIO", output.c_str(), 1);
    ASSERT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
    EXPECT_FALSE(BASS_Init(-1, 44100, 0, nullptr, nullptr)) << "twice";
}

HSTREAM streamOf(const Samples& samples) {
    static int number = 0;
    const auto path = support::scratch() / ("source" + std::to_string(++number) + ".wav");
    const HSTREAM stream =
        BASS_StreamCreateFile(0, support::writeWav(path, samples).c_str(), 0, 0, BASS_ASYNCFILE);
    EXPECT_NE(stream, 0U);
    return stream;
}

std::atomic<int> ends{0};
std::atomic<int> slides{0};
void countEnd(HSYNC, DWORD, DWORD, void*) {
    ++ends;
}
void countSlideAndPause(HSYNC, DWORD channel, DWORD, void*) {
    ++slides;
    BASS_ChannelPause(channel);
}

void playToEnd(HSTREAM stream) {
    BASS_ChannelSetSync(stream, BASS_SYNC_END | BASS_SYNC_ONETIME, 0, &countEnd, nullptr);
    BASS_ChannelPlay(stream, 0);
    ASSERT_TRUE(waitFor([] { return ends > 0; }));
    ASSERT_TRUE(waitFor([&] { return BASS_ChannelIsActive(stream) == BASS_ACTIVE_STOPPED; }));
}

/// The recording, after the output has stopped and completed the file's header.
std::vector<float> recorded(std::size_t samples) {
    constexpr std::size_t header = 44;
    std::string bytes;
    EXPECT_TRUE(waitFor([&] {
        bytes = support::readFile(recordingFile());
        return bytes.size() >= header + samples * sizeof(float);
    }));
    std::vector<float> frames((bytes.size() - header) / sizeof(float));
    std::memcpy(frames.data(), bytes.data() + header, frames.size() * sizeof(float));
    return frames;
}

/// In frames.
QWORD position(HSTREAM stream) {
    return BASS_ChannelGetPosition(stream, BASS_POS_BYTE) / bytesPerFrame;
}
bool seek(HSTREAM stream, QWORD frame) {
    return BASS_ChannelSetPosition(stream, frame * bytesPerFrame, BASS_POS_BYTE);
}

std::atomic<bool> seeking{false};
std::atomic<bool> mayAnswer{false};

/// A second of silence that refuses to seek, after a time.
class OneWaySource : public bass::Source {
public:
    bass::ReadResult read(std::span<float> out) override {
        const std::size_t frames = std::min(out.size() / 2, m_left);
        std::fill_n(out.begin(), frames * 2, 0.0F);
        m_left -= frames;
        return {frames, m_left > 0 ? bass::ReadResult::Status::more : bass::ReadResult::Status::end};
    }
    bool seek(std::int64_t) override {
        seeking = true;
        EXPECT_TRUE(waitFor([] { return mayAnswer.load(); }));
        seeking = false;
        return false;
    }
    std::optional<std::int64_t> lengthFrames() const override { return bass::sampleRate; }

private:
    std::size_t m_left = bass::sampleRate;
};

TEST(EngineTest, SixteenBitSamplesArePlayedUnchanged) {
    open("wav:" + recordingFile().string());
    const Samples source = support::noise(100000);
    playToEnd(streamOf(source));
    const auto out = recorded(source.size());
    ASSERT_GE(out.size(), source.size());
    std::vector<float> expected = sounds::exactly(source);
    expected.resize(out.size()); // silence after the end
    EXPECT_TRUE(out == expected);
    EXPECT_EQ(ends, 1);
}

TEST(EngineTest, SeeksToTheFrameAndRestartsAfterTheEnd) {
    open("wav:" + recordingFile().string());
    const Samples source = support::noise(60000);
    const HSTREAM stream = streamOf(source);
    const std::vector<float> samples = sounds::exactly(source);
    ASSERT_TRUE(
        waitFor([&] { return BASS_ChannelGetLength(stream, BASS_POS_BYTE) == 60000 * bytesPerFrame; }));
    ASSERT_TRUE(seek(stream, 45000));
    EXPECT_EQ(position(stream), 45000U) << "at once";
    playToEnd(stream);
    EXPECT_EQ(position(stream), 60000U);
    const auto out = recorded(15000 * 2);
    EXPECT_LT(std::abs(out[0]), 0.01F) << "it begins in the midst of a wave: with a ramp";
    EXPECT_TRUE(std::equal(samples.begin() + 90000 + edge, samples.end(), out.begin() + edge));

    ends = 0;
    playToEnd(stream);
    const auto contains = [&](const std::vector<float>& frames) {
        return !std::ranges::search(frames, samples).empty();
    };
    EXPECT_TRUE(waitFor([&] { return contains(recorded(out.size() + samples.size())); }))
        << "after the silence that ended the chunk of the last frame";
}

TEST(EngineTest, SlidesAreLinearAndReportTheirEndOnce) {
    open("wav:" + recordingFile().string());
    const HSTREAM stream = streamOf(Samples(2 * 44100 * 5, 16384));
    BASS_ChannelSetSync(stream, BASS_SYNC_SLIDE, 0, &countSlideAndPause, nullptr);
    BASS_ChannelSetAttribute(stream, BASS_ATTRIB_VOL, 0.5F);
    ASSERT_TRUE(BASS_ChannelSlideAttribute(stream, BASS_ATTRIB_VOL, 0.0F, 300));
    BASS_ChannelPlay(stream, 0);
    EXPECT_TRUE(BASS_ChannelIsSliding(stream, BASS_ATTRIB_VOL));
    ASSERT_TRUE(waitFor([&] { return BASS_ChannelIsActive(stream) == BASS_ACTIVE_PAUSED; }));
    EXPECT_EQ(slides, 1);
    EXPECT_FALSE(BASS_ChannelIsSliding(stream, BASS_ATTRIB_VOL));
    float gain = 1;
    ASSERT_TRUE(BASS_ChannelGetAttribute(stream, BASS_ATTRIB_VOL, &gain));
    EXPECT_EQ(gain, 0.0F);

    constexpr std::size_t slideFrames = 44100 * 3 / 10;
    const auto out = recorded(2 * slideFrames);
    for (std::size_t i = 0; i < slideFrames; ++i)
        ASSERT_NEAR(out[2 * i], 0.25 * (1.0 - static_cast<double>(i + 1) / slideFrames), 1e-6) << i;
}

TEST(EngineTest, GainAndBalanceApplyFromTheFirstFrameWithoutClicks) {
    open("wav:" + recordingFile().string());
    constexpr std::size_t samples = 2 * 44100 * 30;
    const HSTREAM stream = streamOf(Samples(samples, 16384));
    BASS_ChannelSetAttribute(stream, BASS_ATTRIB_VOL, 0.8F);
    BASS_ChannelSetAttribute(stream, BASS_ATTRIB_PAN, -0.5F);
    BASS_ChannelSetSync(stream, BASS_SYNC_END | BASS_SYNC_ONETIME, 0, &countEnd, nullptr);
    BASS_ChannelPlay(stream, 0);
    while (ends == 0 && position(stream) == 0)
        std::this_thread::yield();
    BASS_ChannelSetAttribute(stream, BASS_ATTRIB_VOL, 0.1F);
    ASSERT_TRUE(waitFor([] { return ends > 0; }));
    const auto out = recorded(samples);
    EXPECT_FLOAT_EQ(out[0], 0.4F);
    EXPECT_FLOAT_EQ(out[1], 0.2F) << "half of the right side";
    for (std::size_t i = 2; i < samples; ++i)
        ASSERT_NEAR(out[i], out[i - 2], 0.5 / 200) << i;
}

TEST(EngineTest, ThePositionFollowsTheClockAndNeverMovesBack) {
    open("null");
    const HSTREAM stream = streamOf(support::sine(440, 44100));
    BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &countEnd, nullptr);
    BASS_ChannelPlay(stream, 0);
    ASSERT_TRUE(waitFor([&] { return position(stream) > 0; }));
    const auto began = std::chrono::steady_clock::now();
    const QWORD first = position(stream);
    QWORD last = first;
    while (ends == 0) {
        const QWORD now = position(stream);
        ASSERT_GE(now, last);
        last = now;
        ASSERT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(20));
        std::this_thread::yield();
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
    constexpr double lateness = 0.03; // of an output thread that catches up after the first position
    EXPECT_GE(took.count(), 1.0 - static_cast<double>(first) / 44100 - lateness)
        << "the end came before it was recorded";
    EXPECT_EQ(position(stream), 44100U);
}

TEST(EngineTest, APausedStreamKeepsThePositionPlayedLast) {
    open("null");
    const HSTREAM stream = streamOf(support::sine(440, 44100 * 20));
    BASS_ChannelPlay(stream, 0);
    ASSERT_TRUE(waitFor([&] { return position(stream) > 4410; }));
    const QWORD before = position(stream);
    ASSERT_TRUE(BASS_ChannelPause(stream));
    EXPECT_FALSE(BASS_ChannelPause(stream)) << "already";
    const QWORD paused = position(stream);
    EXPECT_GE(paused, before);
    std::vector<float> magnitudes(512);
    ASSERT_EQ(BASS_ChannelGetData(stream, magnitudes.data(), BASS_DATA_FFT1024), 2048U);
    EXPECT_GT(magnitudes[10], 0.3F) << "430 Hz";
    EXPECT_LT(magnitudes[100], 0.01F);
    BASS_ChannelPlay(stream, 0);
    EXPECT_GE(position(stream), paused);
    EXPECT_TRUE(waitFor([&] { return position(stream) > paused; }));
}

void freeItself(HSYNC, DWORD channel, DWORD, void*) {
    BASS_StreamFree(channel);
    ++ends;
}

TEST(EngineTest, ARefusedSeekLosesNoEnd) {
    open("null");
    bass::Library::instance().openWith([](const auto& name, const auto& cancel) {
        if (name.text != "one way") return bass::openByName(name, cancel);
        return bass::OpenedSource{std::make_unique<OneWaySource>()};
    });
    const HSTREAM stream = BASS_StreamCreateFile(0, "one way", 0, 0, 0);
    BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &countEnd, nullptr);
    BASS_ChannelPlay(stream, 0);
    // Requested shortly before the end; done after the end has been played.
    ASSERT_TRUE(waitFor([&] { return position(stream) > 30000; }));
    ASSERT_TRUE(seek(stream, 0));
    ASSERT_TRUE(waitFor([] { return seeking.load(); }));
    const HSTREAM clock = streamOf(Samples(bass::sampleRate * 2));
    BASS_ChannelPlay(clock, 0);
    ASSERT_TRUE(waitFor([&] { return position(clock) > 25000; }));
    mayAnswer = true;
    EXPECT_TRUE(waitFor([] { return ends == 1; }));
    EXPECT_EQ(BASS_ChannelIsActive(stream), BASS_ACTIVE_STOPPED);

    ASSERT_TRUE(seek(stream, 0));
    ASSERT_TRUE(waitFor([&] { return position(stream) == bass::sampleRate; }));
    BASS_ChannelPlay(stream, 0);
    EXPECT_TRUE(waitFor([&] { return BASS_ChannelIsActive(stream) == BASS_ACTIVE_STOPPED; }))
        << "it has nothing more to play";
    EXPECT_EQ(ends, 1);
    BASS_StreamFree(stream);
}

/// Endless silence whose reads and seeks block while `held` is set.
class HeldSource : public bass::Source {
public:
    static inline std::atomic<bool> held{false};
    static inline std::atomic<int> waiting{0};

    bass::ReadResult read(std::span<float> out) override {
        wait();
        std::ranges::fill(out, 0.0F);
        return {out.size() / 2, bass::ReadResult::Status::more};
    }
    bool seek(std::int64_t) override {
        wait();
        return true;
    }
    std::optional<std::int64_t> lengthFrames() const override { return bass::sampleRate * 600; }

private:
    static void wait() {
        ++waiting;
        EXPECT_TRUE(waitFor([] { return !held.load(); }));
        --waiting;
    }
};

HSTREAM playHeldSource() {
    bass::Library::instance().openWith(
        [](const auto&, const auto&) { return bass::OpenedSource{std::make_unique<HeldSource>()}; });
    const HSTREAM stream = BASS_StreamCreateFile(0, "held", 0, 0, 0);
    BASS_ChannelSetSync(stream, BASS_SYNC_SLIDE, 0, &countSlideAndPause, nullptr);
    BASS_ChannelPlay(stream, 0);
    EXPECT_TRUE(waitFor([&] { return position(stream) > 0; }));
    return stream;
}

TEST(EngineTest, AFadeEndsThoughASeekHangs) {
    open("null");
    const HSTREAM stream = playHeldSource();
    HeldSource::held = true;
    ASSERT_TRUE(seek(stream, 1000000));
    ASSERT_TRUE(waitFor([] { return HeldSource::waiting > 0; }));
    BASS_ChannelSlideAttribute(stream, BASS_ATTRIB_VOL, 0.0F, 300);
    EXPECT_TRUE(waitFor([&] { return BASS_ChannelIsActive(stream) == BASS_ACTIVE_PAUSED; }));
    EXPECT_EQ(position(stream), 1000000U);
    BASS_StreamFree(stream); // does not wait for it
    HeldSource::held = false;
    EXPECT_TRUE(waitFor([] { return HeldSource::waiting == 0; }));
}

TEST(EngineTest, ASeekWaitsForAFadeToSilence) {
    open("null");
    const HSTREAM stream = playHeldSource();
    BASS_ChannelSlideAttribute(stream, BASS_ATTRIB_VOL, 0.0F, 300);
    ASSERT_TRUE(seek(stream, 1000000));
    EXPECT_EQ(BASS_ChannelIsActive(stream), BASS_ACTIVE_PLAYING) << "it fades out where it was";
    EXPECT_EQ(position(stream), 1000000U);
    ASSERT_TRUE(waitFor([&] { return BASS_ChannelIsActive(stream) == BASS_ACTIVE_PAUSED; }));
    EXPECT_EQ(slides, 1);
    BASS_ChannelSetAttribute(stream, BASS_ATTRIB_VOL, 1.0F);
    BASS_ChannelPlay(stream, 0);
    EXPECT_TRUE(waitFor([&] { return position(stream) > 1000000; }));
}

/// Endless silence whose first seek blocks until it is cancelled.
class SlowlySoughtSource : public bass::Source {
public:
    static inline std::atomic<int> seeks{0};

    explicit SlowlySoughtSource(std::shared_ptr<bass::Cancel> cancel) : m_cancel(std::move(cancel)) {}
    bass::ReadResult read(std::span<float> out) override {
        std::ranges::fill(out, 0.0F);
        return {out.size() / 2, bass::ReadResult::Status::more};
    }
    bool seek(std::int64_t) override {
        if (++seeks > 1) return true;
        EXPECT_TRUE(waitFor([this] { return m_cancel->requested(); }));
        return false;
    }
    std::optional<std::int64_t> lengthFrames() const override { return bass::sampleRate * 600; }

private:
    std::shared_ptr<bass::Cancel> m_cancel;
};

TEST(EngineTest, ASeekRepeatedDuringASeekIsNotLost) {
    open("null");
    bass::Library::instance().openWith([](const auto&, const auto& cancel) {
        return bass::OpenedSource{std::make_unique<SlowlySoughtSource>(cancel)};
    });
    const HSTREAM stream = BASS_StreamCreateFile(0, "slow", 0, 0, 0);
    BASS_ChannelPlay(stream, 0);
    ASSERT_TRUE(waitFor([&] { return position(stream) > 0; }));
    ASSERT_TRUE(seek(stream, 1000000));
    ASSERT_TRUE(waitFor([] { return SlowlySoughtSource::seeks == 1; }));
    ASSERT_TRUE(seek(stream, 1000000));
    EXPECT_TRUE(waitFor([&] { return position(stream) > 1000000; }));
    EXPECT_EQ(SlowlySoughtSource::seeks, 2);
}

TEST(EngineTest, AFadeEndsThoughThereIsNoDevice) {
    unsetenv("TUL_AUDIO");
    setenv("PULSE_SERVER", ("unix:" + (support::scratch() / "no-server").string()).c_str(), 1);
    ASSERT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
    const HSTREAM stream = streamOf(Samples(2 * 44100));
    BASS_ChannelSetSync(stream, BASS_SYNC_SLIDE, 0, &countSlideAndPause, nullptr);
    BASS_ChannelPlay(stream, 0);
    ASSERT_TRUE(waitFor([&] { return BASS_StreamGetStatus(stream, nullptr) == BASS_STREAM_OPEN; }));
    BASS_ChannelSlideAttribute(stream, BASS_ATTRIB_VOL, 0.0F, 300);
    EXPECT_TRUE(waitFor([&] { return BASS_ChannelIsActive(stream) == BASS_ACTIVE_PAUSED; }));
    EXPECT_EQ(slides, 1);
}

class CollectingTap : public bass::SampleTap {
public:
    void tapped(std::span<const bass::Frame> frames) noexcept override {
        const std::size_t at = std::min(m_count.load(), m_frames.size());
        std::copy_n(frames.begin(), std::min(frames.size(), m_frames.size() - at),
                    m_frames.begin() + static_cast<std::ptrdiff_t>(at));
        m_count += frames.size();
    }
    std::size_t count() const { return m_count; }
    const std::vector<bass::Frame>& frames() const { return m_frames; }

private:
    std::vector<bass::Frame> m_frames = std::vector<bass::Frame>(2 * bass::sampleRate);
    std::atomic<std::size_t> m_count{0};
};

/// Frames that count up. One of its reads is held, and brings its frames afterwards. Refuses to seek.
class CountingSource : public bass::Source {
public:
    static constexpr std::int64_t length = 60000;
    static inline int heldRead = 0;
    static inline std::atomic<int> reads{0};
    static inline std::atomic<bool> holds{false};
    static inline std::atomic<bool> released{false};

    static float valueOf(std::int64_t frame) { return static_cast<float>(frame) / (1 << 20); }
    bass::ReadResult read(std::span<float> out) override {
        if (++reads == heldRead) {
            holds = true;
            EXPECT_TRUE(waitFor([] { return released.load(); }));
        }
        // The first read is short: after 33 chunks of the output the ring is half full to the frame.
        const std::int64_t room = reads == 1 ? 217 : static_cast<std::int64_t>(out.size() / 2);
        const auto frames = static_cast<std::size_t>(std::min(length - m_next, room));
        for (std::size_t i = 0; i < 2 * frames; i += 2)
            out[i] = out[i + 1] = valueOf(m_next++);
        return {frames, m_next < length ? bass::ReadResult::Status::more : bass::ReadResult::Status::end};
    }
    bool seek(std::int64_t) override { return false; }
    std::optional<std::int64_t> lengthFrames() const override { return length; }

private:
    std::int64_t m_next = 0;
};

HSTREAM playCountingSource(int heldRead) {
    CountingSource::heldRead = heldRead;
    bass::Library::instance().openWith(
        [](const auto&, const auto&) { return bass::OpenedSource{std::make_unique<CountingSource>()}; });
    const HSTREAM stream = BASS_StreamCreateFile(0, "counting", 0, 0, 0);
    BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &countEnd, nullptr);
    EXPECT_TRUE(waitFor([] { return CountingSource::reads == 16; })) << "the ring is full";
    BASS_ChannelPlay(stream, 0);
    while (!CountingSource::holds)
        std::this_thread::yield();
    return stream;
}

TEST(EngineTest, ARefusedSeekLosesNoFrames) {
    open("wav:" + recordingFile().string());
    const HSTREAM stream = playCountingSource(20);
    ASSERT_TRUE(seek(stream, 0));
    CountingSource::released = true;
    ASSERT_TRUE(waitFor([] { return ends == 1; }));
    const auto out = recorded(2 * CountingSource::length);
    EXPECT_EQ(out[2000], CountingSource::valueOf(1000));
    // An underrun after the seek may separate the frames, and its ramps change their values: compare their
    // number. The first frame, and the first of a ramp, are 0.
    EXPECT_TRUE(waitFor([] {
        const auto played = recorded(2 * CountingSource::length);
        const auto isSound = [](float sample) { return sample != 0; };
        return std::ranges::count_if(played, isSound) >= 2 * CountingSource::length - 16;
    }));
}

TEST(EngineTest, APauseWhileTheRingIsRefilledLosesNoFrames) {
    open("null");
    static CollectingTap tap; // the stream's until the process ends
    // The ring has room for this read and no more, and the output has just asked for a chunk.
    const HSTREAM stream = playCountingSource(24);
    ASSERT_TRUE(BASS_ChannelPause(stream));
    CountingSource::released = true;
    ASSERT_TRUE(bass::setTap(stream, tap));
    BASS_ChannelPlay(stream, 0);
    ASSERT_TRUE(waitFor([] { return ends == 1; }));
    const auto first = static_cast<std::int64_t>(tap.frames()[0][0] * (1 << 20));
    ASSERT_GT(tap.count(), 20000U);
    for (std::size_t i = 0; i < tap.count(); ++i)
        ASSERT_EQ(tap.frames()[i][0], CountingSource::valueOf(first + static_cast<std::int64_t>(i))) << i;
}

TEST(EngineTest, ATapGetsEachFrameOnceOverPausesAndJoins) {
    open("null");
    static CollectingTap tap; // the stream's until the process ends
    const Samples noise = support::noise(44100);
    const HSTREAM stream = streamOf(noise);
    const auto second = support::writeWav(support::scratch() / "second.wav", support::noise(22050, 2, 2));
    ASSERT_TRUE(bass::setTap(stream, tap));
    BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, second.c_str());
    BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &countEnd, nullptr);
    BASS_ChannelPlay(stream, 0);
    for (const QWORD frame : {4000U, 9000U, 20000U}) {
        ASSERT_TRUE(waitFor([&] { return position(stream) > frame; }));
        ASSERT_TRUE(BASS_ChannelPause(stream));
        BASS_ChannelPlay(stream, 0);
    }
    ASSERT_TRUE(waitFor([] { return ends == 1; }));
    ASSERT_TRUE(waitFor([] { return tap.count() >= 44100 + 22050; }));
    std::vector<float> expected = sounds::exactly(noise);
    const auto behind = sounds::exactly(support::noise(22050, 2, 2));
    expected.insert(expected.end(), behind.begin(), behind.end());
    EXPECT_EQ(tap.count(), expected.size() / 2);
    EXPECT_EQ(std::memcmp(tap.frames().data(), expected.data(), expected.size() * sizeof(float)), 0);
}

TEST(EngineTest, HandlesMayBeFreedOnAnyThreadAtAnyTime) {
    open("fast");
    const Samples source = support::noise(20000);
    for (int i = 0; i < 20; ++i) {
        const HSTREAM stream = streamOf(source);
        BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &freeItself, nullptr);
        BASS_ChannelPlay(stream, 0);
    }
    ASSERT_TRUE(waitFor([] { return ends == 20; }));

    const HSTREAM shared = streamOf(support::noise(44100));
    std::atomic<bool> stop{false};
    std::vector<std::jthread> users;
    for (int user = 0; user < 3; ++user) {
        users.emplace_back([&, user] {
            for (int i = 0; i < 150; ++i) {
                BASS_ChannelPlay(shared, i % 7 == 0);
                seek(shared, static_cast<QWORD>(i * 200));
                BASS_ChannelSlideAttribute(shared, BASS_ATTRIB_VOL, static_cast<float>(user) / 3, 1);
                BASS_ChannelPause(shared);
                std::vector<float> magnitudes(512);
                BASS_ChannelGetData(shared, magnitudes.data(), BASS_DATA_FFT1024);
                if (user == 2 && i == 100) BASS_StreamFree(shared);
            }
        });
    }
    users.clear();
    EXPECT_EQ(BASS_ChannelIsActive(shared), BASS_ACTIVE_STOPPED);
}

TEST(EngineTest, FreeingTheLibraryCompletesTheOutputFile) {
    open("wav:" + recordingFile().string());
    const HSTREAM stream = streamOf(support::sine(440, 60 * 44100));
    ASSERT_TRUE(BASS_ChannelPlay(stream, 0));
    ASSERT_TRUE(waitFor([] { return std::filesystem::file_size(recordingFile()) > 100000; }));
    EXPECT_TRUE(BASS_Free());
    const std::string bytes = support::readFile(recordingFile());
    std::uint32_t data = 0;
    std::memcpy(&data, bytes.data() + 40, sizeof(data));
    EXPECT_EQ(44 + data, bytes.size());
    EXPECT_FALSE(BASS_Free()) << "twice";
}

TEST(EngineTest, CallsOnInvalidHandlesAreHarmless) {
    EXPECT_EQ(BASS_StreamCreateFile(0, "/dev/null", 0, 0, 0), 0U) << "no output yet";
    open("fast");
    const HSTREAM freed = streamOf(support::noise(100));
    ASSERT_TRUE(BASS_StreamFree(freed));
    for (const HSTREAM handle : {HSTREAM{0}, freed, ~HSTREAM{0}}) {
        float value = 0;
        EXPECT_FALSE(BASS_StreamFree(handle));
        EXPECT_FALSE(BASS_ChannelPlay(handle, 0));
        EXPECT_EQ(BASS_ChannelIsActive(handle), BASS_ACTIVE_STOPPED);
        EXPECT_EQ(BASS_ChannelGetPosition(handle, BASS_POS_BYTE), BASS_QWORD_ERROR);
        EXPECT_LT(BASS_ChannelBytes2Seconds(handle, 8), 0);
        EXPECT_FALSE(BASS_ChannelGetAttribute(handle, BASS_ATTRIB_VOL, &value));
        EXPECT_EQ(BASS_ChannelSetSync(handle, BASS_SYNC_END, 0, &countEnd, nullptr), 0U);
        EXPECT_EQ(BASS_ChannelGetData(handle, &value, BASS_DATA_FFT1024), BASS_DWORD_ERROR);
    }
}

TEST(Fft, MatchesTheDirectTransform) {
    std::vector<bass::Frame> frames(bass::fftFrames);
    const auto noise = support::noise(bass::fftFrames);
    for (std::size_t i = 0; i < frames.size(); ++i)
        frames[i] = {static_cast<float>(noise[2 * i]) / 32768, static_cast<float>(noise[2 * i + 1]) / 32768};
    const auto fast = bass::magnitudes(frames);
    for (const std::size_t bin : {0U, 1U, 77U, 430U, 511U}) {
        std::complex<double> sum = 0;
        for (std::size_t i = 0; i < bass::fftFrames; ++i) {
            const double turn = 2 * std::numbers::pi * static_cast<double>(i) / bass::fftFrames;
            const double mono = 0.5 * (frames[i][0] + frames[i][1]);
            sum += mono * (0.5 - 0.5 * std::cos(turn)) * std::polar(1.0, -turn * static_cast<double>(bin));
        }
        EXPECT_NEAR(fast[bin], 4.0 / bass::fftFrames * std::abs(sum), 1e-5) << bin;
    }
    for (std::size_t i = 0; i < bass::fftFrames; ++i)
        frames[i].fill(
            static_cast<float>(std::sin(2 * std::numbers::pi * 50 * static_cast<double>(i) / 1024)));
    EXPECT_NEAR(bass::magnitudes(frames)[50], 1.0F, 1e-4);
}

} // namespace
