// Playback through a real sound server whose sink is recorded. CTest runs each case in its own process,
// because the library opens its output once.

#include "platform/bass/bass.h"
#include "tests/bass/LibraryEnd.h"
#include "tests/support/Media.h"
#include "tests/support/SoundServer.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <future>
#include <optional>
#include <ostream>

namespace {

using support::waitFor;
using Samples = std::vector<std::int16_t>;

constexpr std::size_t rate = 44100;
constexpr std::chrono::seconds limit(60);

std::atomic<int> ends{0};
void countEnd(HSYNC, DWORD, DWORD, void*) {
    ++ends;
}

bool alike(std::int16_t a, std::int16_t b) {
    return std::abs(a - b) <= 1; // the server's conversion to 16 bits may differ by one
}

/// The frame of `recorded` at which sound begins, from `frame` on.
std::size_t soundFrom(const Samples& recorded, std::size_t frame = 0) {
    const auto begin = recorded.begin() + static_cast<std::ptrdiff_t>(frame * 2);
    const auto first = std::find_if(begin, recorded.end(), [](std::int16_t s) { return std::abs(s) > 1; });
    return static_cast<std::size_t>(first - recorded.begin()) / 2;
}

/// The first 10 ms of silence from `frame` on, which noise never contains.
std::size_t silenceFrom(const Samples& recorded, std::size_t frame) {
    const auto begin = recorded.begin() + static_cast<std::ptrdiff_t>(frame * 2);
    const auto gap = std::search_n(begin, recorded.end(), rate / 50, 0);
    return static_cast<std::size_t>(gap - recorded.begin()) / 2;
}

/// The number of equal frames in `recorded` from `at` on and in the source from `frame` on.
std::size_t alikeFrames(const Samples& recorded, std::size_t at, const Samples& source, std::size_t frame) {
    const auto recordedFrom =
        recorded.begin() + static_cast<std::ptrdiff_t>(std::min(at * 2, recorded.size()));
    const auto sourceFrom = source.begin() + static_cast<std::ptrdiff_t>(frame * 2);
    const auto differ = std::mismatch(recordedFrom, recorded.end(), sourceFrom, source.end(), alike);
    return static_cast<std::size_t>(differ.second - sourceFrom) / 2;
}

/// The source frame that was recorded at frame `at`.
std::optional<std::size_t> placeOf(const Samples& recorded, std::size_t at, const Samples& source) {
    constexpr std::size_t enough = 32;
    if (recorded.size() < (at + enough) * 2) return std::nullopt;
    const auto from = recorded.begin() + static_cast<std::ptrdiff_t>(at * 2);
    const auto found = std::search(source.begin(), source.end(), from, from + enough * 2, alike);
    if (found == source.end()) return std::nullopt;
    return static_cast<std::size_t>(found - source.begin()) / 2;
}

class Device : public testing::Test {
protected:
    /// Plays noise, so that each frame identifies its position, from a FLAC file.
    void play(std::size_t seconds) {
        unsetenv("TUL_AUDIO");
        ASSERT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
        source = support::noise(seconds * rate);
        const auto flac = support::encode("noise.flac", source);
        stream = BASS_StreamCreateFile(0, flac.c_str(), 0, 0, BASS_ASYNCFILE);
        ASSERT_NE(stream, 0U);
        ASSERT_NE(BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &countEnd, nullptr), 0U);
        ASSERT_TRUE(BASS_ChannelPlay(stream, 0));
    }

    /// A second sink that is always present. It is not recorded.
    static void leaveAWayPastTheServer() {
        support::writeFile(std::filesystem::path(std::getenv("HOME")) / ".asoundrc",
                           "pcm.!default { type null }\n");
    }

    std::size_t position() const { return BASS_ChannelGetPosition(stream, BASS_POS_BYTE) / 8; }

    /// The recording, once the track has ended and its sound is followed by silence.
    Samples recordedToEnd() {
        EXPECT_TRUE(waitFor([] { return ends > 0; }, limit));
        EXPECT_TRUE(waitFor([&] { return server.playingStreams() == 0; }, limit));
        const std::size_t size = server.recorded().size();
        EXPECT_TRUE(waitFor([&] { return server.recorded().size() > size + rate; }, limit));
        EXPECT_EQ(ends, 1);
        EXPECT_EQ(BASS_ChannelIsActive(stream), BASS_ACTIVE_STOPPED);
        return server.recorded();
    }

    /// Expects that the recording from frame `begin` on equals the source from frame `from` to its end.
    void expectGoesOn(const Samples& recorded, std::size_t begin, std::size_t from, double within) const {
        constexpr std::size_t ramp = rate / 10; // sound fades in after a break
        const auto place = placeOf(recorded, begin + ramp, source);
        ASSERT_TRUE(place);
        EXPECT_NEAR(static_cast<double>(*place - ramp), static_cast<double>(from), within);
        EXPECT_EQ(alikeFrames(recorded, begin + ramp, source, *place), source.size() / 2 - *place);
    }

    void expectPlayedToEnd(const Samples& recorded) const {
        const auto end =
            std::search(recorded.begin(), recorded.end(), source.end() - rate, source.end(), alike);
        EXPECT_NE(end, recorded.end()) << "the last half second";
    }

    support::SoundServer server;
    Samples source;
    HSTREAM stream = 0;
};

TEST_F(Device, PlaysEveryFrameOnceAndUnchanged) {
    play(4);
    const Samples recorded = recordedToEnd();
    const std::size_t begin = soundFrom(recorded);
    EXPECT_EQ(alikeFrames(recorded, begin, source, 0), source.size() / 2);
    EXPECT_EQ(soundFrom(recorded, begin + source.size() / 2), recorded.size() / 2) << "sound after the end";
}

TEST_F(Device, ContinuesWhenTheServerReturns) {
    leaveAWayPastTheServer();
    play(8);
    ASSERT_TRUE(waitFor([&] { return position() > rate * 2; }, limit));
    server.crash();
    const std::size_t lost = position();
    EXPECT_FALSE(waitFor([&] { return position() > lost + rate / 2; }, std::chrono::seconds(2)))
        << "past the server";
    std::size_t last = lost;
    std::size_t maxStepBack = 0;
    server.restart();
    EXPECT_TRUE(waitFor(
        [&] {
            const std::size_t now = position();
            if (now < last) maxStepBack = std::max(maxStepBack, last - now);
            last = now;
            return ends > 0;
        },
        limit));
    EXPECT_EQ(maxStepBack, 0U);

    const Samples recorded = recordedToEnd();
    expectGoesOn(recorded, soundFrom(recorded), lost, rate * 0.5);
}

TEST_F(Device, AFadeEndsWhenTheServerStopsDuringIt) {
    leaveAWayPastTheServer();
    play(8);
    ASSERT_TRUE(waitFor([&] { return position() > rate; }, limit));
    ASSERT_TRUE(BASS_ChannelSlideAttribute(stream, BASS_ATTRIB_VOL, 0.0F, 60'000));
    server.crash();
    EXPECT_TRUE(
        waitFor([&] { return !BASS_ChannelIsSliding(stream, BASS_ATTRIB_VOL); }, std::chrono::seconds(20)));
}

/// Ways in which a sound server is unavailable at first.
struct LateServer {
    const char* name;
    void (*leave)(support::SoundServer& server);
    void (*come)(support::SoundServer& server);
};

void PrintTo(const LateServer& row, std::ostream* out) {
    *out << row.name;
}

class DeviceLater : public Device, public testing::WithParamInterface<LateServer> {};

INSTANTIATE_TEST_SUITE_P(, DeviceLater,
                         testing::Values(LateServer{"StartedLater", [](auto& server) { server.crash(); },
                                                    [](auto& server) { server.restart(); }},
                                         LateServer{"FrozenAtFirst",
                                                    [](auto& server) { server.freeze(true); },
                                                    [](auto& server) { server.freeze(false); }}),
                         [](const auto& row) { return row.param.name; });

TEST_P(DeviceLater, StartsToPlayOnceTheServerResponds) {
    leaveAWayPastTheServer();
    GetParam().leave(server);
    const auto begin = std::chrono::steady_clock::now();
    play(4);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5)) << "waits for the server";
    EXPECT_EQ(BASS_ChannelIsActive(stream), BASS_ACTIVE_PLAYING);
    EXPECT_FALSE(waitFor([&] { return position() > 0; }, std::chrono::seconds(2))) << "past the server";
    GetParam().come(server);
    const Samples recorded = recordedToEnd();
    EXPECT_GT(alikeFrames(recorded, soundFrom(recorded), source, 0), rate / 10) << "from its first frame";
    expectPlayedToEnd(recorded);
}

TEST_F(Device, CallsReturnWhileTheServerHangs) {
    play(8);
    ASSERT_TRUE(waitFor([&] { return position() > rate; }, limit));
    server.freeze(true);
    // A seek flushes the server's buffer, and the server does not respond to that.
    auto stays = std::async(std::launch::async, [this] {
        BASS_ChannelSetPosition(stream, QWORD{7} * rate * 8, BASS_POS_BYTE);
        return !waitFor([this] { return position() != 7 * rate; }, std::chrono::seconds(1));
    });
    EXPECT_EQ(stays.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    server.freeze(false);
    EXPECT_TRUE(stays.get());
    const Samples recorded = recordedToEnd();
    expectPlayedToEnd(recorded);
}

TEST_F(Device, StopsTheDeviceWhilePausedAndResumesThere) {
    play(5);
    ASSERT_TRUE(waitFor([&] { return position() > rate * 2; }, limit));
    EXPECT_EQ(server.playingStreams(), 1U);
    ASSERT_TRUE(BASS_ChannelPause(stream));
    EXPECT_EQ(BASS_ChannelIsActive(stream), BASS_ACTIVE_PAUSED);
    ASSERT_TRUE(waitFor([&] { return server.playingStreams() == 0; }, limit));
    const std::size_t paused = position();
    const std::size_t size = server.recorded().size();
    ASSERT_TRUE(waitFor([&] { return server.recorded().size() > size + rate; }, limit));
    EXPECT_EQ(position(), paused);
    ASSERT_TRUE(BASS_ChannelPlay(stream, 0));

    const Samples recorded = recordedToEnd();
    const std::size_t begin = soundFrom(recorded);
    const std::size_t silence = silenceFrom(recorded, begin);
    EXPECT_NEAR(static_cast<double>(silence - begin), static_cast<double>(paused), rate * 0.25);
    expectGoesOn(recorded, soundFrom(recorded, silence), paused, rate * 0.05);
}

/// Commands given while the join of two tracks is queued in the device.
class DeviceJoin : public Device {
protected:
    static constexpr std::size_t firstFrames = rate * 2;

    void playFirst() {
        play(2);
        next = support::noise(rate * 2, 2, 2);
        nextFile = support::encode("next.flac", next);
        ASSERT_TRUE(BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, nextFile.c_str()));
    }
    /// The device requests 200 ms at once: by then the join is mixed.
    void waitForQueuedJoin() const {
        ASSERT_TRUE(waitFor([this] { return position() > firstFrames - rate / 20; }, limit));
    }
    void startNext() {
        BASS_StreamFree(stream);
        stream = BASS_StreamCreateFile(0, nextFile.c_str(), 0, 0, 0);
        ASSERT_NE(stream, 0U);
        BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &countEnd, nullptr);
        ends = 0;
        BASS_ChannelPlay(stream, 0);
    }

    Samples next;
    std::filesystem::path nextFile;
};

TEST_F(DeviceJoin, TracksFollowWithoutAGap) {
    playFirst();
    ASSERT_TRUE(waitFor([] { return ends == 1; }, limit));
    EXPECT_EQ(position(), firstFrames);
    startNext();
    EXPECT_LT(position(), rate / 2) << "it plays already, from its start";
    const Samples recorded = recordedToEnd();
    const std::size_t begin = soundFrom(recorded);
    EXPECT_EQ(alikeFrames(recorded, begin, source, 0), firstFrames);
    EXPECT_EQ(alikeFrames(recorded, begin + firstFrames, next, 0), next.size() / 2);
}

TEST_F(DeviceJoin, APauseDiscardsWhatWasMixedAhead) {
    playFirst();
    waitForQueuedJoin();
    ASSERT_TRUE(BASS_ChannelPause(stream));
    ASSERT_TRUE(waitFor([&] { return server.playingStreams() == 0; }, limit));
    const std::size_t paused = position();
    EXPECT_LT(paused, firstFrames);
    EXPECT_EQ(ends, 0);
    ASSERT_TRUE(BASS_ChannelPlay(stream, 0));
    ASSERT_TRUE(waitFor([] { return ends == 1; }, limit));
    startNext();
    const Samples recorded = recordedToEnd();
    const auto join = std::search(recorded.begin(), recorded.end(), next.begin(), next.begin() + 64, alike);
    ASSERT_NE(join, recorded.end());
    const auto at = static_cast<std::size_t>(join - recorded.begin()) / 2;
    EXPECT_EQ(alikeFrames(recorded, at, next, 0), next.size() / 2);
    const std::size_t tail = 1000; // played after the pause, behind its ramp
    EXPECT_EQ(alikeFrames(recorded, at - tail, source, firstFrames - tail), tail);
}

TEST_F(DeviceJoin, AnotherTrackReplacesTheQueuedOne) {
    const Samples other = support::noise(rate, 2, 3);
    const auto otherFile = support::encode("other.flac", other);
    playFirst();
    waitForQueuedJoin();
    nextFile = otherFile;
    ASSERT_TRUE(BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, nextFile.c_str()));
    ASSERT_TRUE(waitFor([] { return ends == 1; }, limit));
    startNext();
    const Samples recorded = recordedToEnd();
    const auto wrong = std::search(recorded.begin(), recorded.end(), next.begin(), next.begin() + 64, alike);
    EXPECT_EQ(wrong, recorded.end()) << "the track that was taken away is played";
    const auto at = std::search(recorded.begin(), recorded.end(), other.begin(), other.begin() + 64, alike);
    ASSERT_NE(at, recorded.end());
    EXPECT_EQ(alikeFrames(recorded, static_cast<std::size_t>(at - recorded.begin()) / 2, other, 0),
              other.size() / 2);
}

TEST_F(DeviceJoin, ASeekBackIsFollowedByTheSameTrack) {
    playFirst();
    waitForQueuedJoin();
    ASSERT_TRUE(BASS_ChannelSetPosition(stream, QWORD{rate} * 8, BASS_POS_BYTE));
    ASSERT_TRUE(waitFor([] { return ends == 1; }, limit));
    startNext();
    const Samples recorded = recordedToEnd();
    const auto again =
        std::search(recorded.begin(), recorded.end(), source.end() - 2 * 1000, source.end(), alike);
    ASSERT_NE(again, recorded.end()) << "the end of the first track";
    EXPECT_EQ(alikeFrames(recorded, static_cast<std::size_t>(again - recorded.begin()) / 2 + 1000, next, 0),
              next.size() / 2);
}

} // namespace
