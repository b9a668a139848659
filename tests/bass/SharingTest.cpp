#include "platform/bass/bassenc.h"
#include "tests/bass/Listener.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <numbers>

namespace {

using support::scratch;
using support::waitFor;
using namespace std::chrono_literals;

constexpr const char* commandLine = "./oggenc -r -R 44100 -M 160 -m 160 -";

/// An encoder in a folder of its own, on a channel that plays in real time without a device.
class SharingTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        setenv("TUL_AUDIO", "null", 1);
        ASSERT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
    }
    SharingTest() {
        std::filesystem::current_path(scratch());
        std::filesystem::remove("oggenc");
    }
    ~SharingTest() override {
        BASS_Encode_Stop(encoder);
        BASS_StreamFree(channel);
        std::filesystem::current_path("/");
    }

    static void installEncoder() { std::filesystem::create_symlink("/usr/bin/oggenc", "oggenc"); }
    static void installScript(const std::string& script) {
        support::writeFile("oggenc", "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions("oggenc", std::filesystem::perms::owner_all);
    }

    void play(const std::filesystem::path& file) {
        BASS_StreamFree(channel);
        channel = BASS_StreamCreateFile(0, file.c_str(), 0, 0, 0);
        ASSERT_NE(channel, 0U);
        BASS_ChannelPlay(channel, 0);
    }
    void share() {
        encoder = BASS_Encode_Start(channel, commandLine, BASS_ENCODE_NOHEAD, nullptr, nullptr);
        port = BASS_Encode_ServerInit(encoder, "0", 40000, 40000, 0, nullptr, nullptr);
    }
    bool playsOn() const {
        const QWORD before = BASS_ChannelGetPosition(channel, BASS_POS_BYTE);
        return waitFor([&] { return BASS_ChannelGetPosition(channel, BASS_POS_BYTE) > before + 40000; });
    }
    static std::vector<float> decode(const std::string& ogg) {
        support::writeFile("heard.ogg", ogg);
        const auto source = bass::openFile("heard.ogg", bass::Format::any);
        return source ? sounds::read(*source).samples : std::vector<float>();
    }

    HSTREAM channel = 0;
    HENCODE encoder = 0;
    DWORD port = 0;
};

TEST_F(SharingTest, ListenersHearTheSourceWhateverTheVolume) {
    installEncoder();
    const auto source = sweeps(30, 44100);
    play(support::writeWav("sweep.wav", source));
    BASS_ChannelSetAttribute(channel, BASS_ATTRIB_VOL, 0.1F);
    BASS_ChannelSetAttribute(channel, BASS_ATTRIB_PAN, -1.0F);
    share();
    ASSERT_NE(port, 0U);
    const Listener early(static_cast<int>(port));
    ASSERT_TRUE(waitFor([&] { return early.body().size() > 80000; }, 60s));
    const Listener late(static_cast<int>(port));
    ASSERT_TRUE(waitFor([&] { return late.body().size() > 60000; }, 60s));

    for (const auto* listener : {&early, &late}) {
        const auto heard = decode(listener->body());
        // From a second into what was heard; the first packet after a join is only half there.
        constexpr std::size_t window = 16384;
        constexpr std::size_t length = 88200;
        ASSERT_GT(heard.size(), 44100 + length);
        const std::int16_t* from = heard.data() + 44100;
        std::size_t best = 0;
        double bestCorrelation = 0;
        for (std::size_t at = 0; at + length < std::min<std::size_t>(source.size(), 44100 * 2 * 20);
             at += 2) {
            const double here = dot(from, source.data() + at, window, 31);
            if (here > bestCorrelation) best = at;
            bestCorrelation = std::max(here, bestCorrelation);
        }
        EXPECT_GT(correlation(from, source.data() + best, length), 0.99);
        const double gain =
            std::sqrt(dot(from, from, length) / dot(source.data() + best, source.data() + best, length));
        EXPECT_NEAR(gain, 1.0, 0.02);
    }
}

TEST_F(SharingTest, StaysOneStreamFromTrackToTrackThroughPauseAndSeek) {
    installEncoder();
    const auto sweep = support::writeWav("sweep.wav", sweeps(2, 44100));
    support::run({"ffmpeg", "-v", "error", "-y", "-i", sweep, "-ac", "1", "-ar", "22050", "mono.wav"});
    support::run({"ffmpeg", "-v", "error", "-y", "-i", sweep, "-ar", "96000", "high.flac"});
    support::run({"ffmpeg", "-v", "error", "-y", "-i", sweep, "last.mp3"});
    play("mono.wav");
    share();
    ASSERT_NE(port, 0U);
    const Listener listener(static_cast<int>(port));
    const auto endOf = [this] {
        return waitFor([this] { return BASS_ChannelIsActive(channel) == BASS_ACTIVE_STOPPED; }, 60s);
    };
    for (const char* next : {"high.flac", "last.mp3"}) {
        ASSERT_TRUE(endOf());
        play(next);
        EXPECT_TRUE(BASS_Encode_SetChannel(encoder, channel));
    }
    BASS_ChannelSetPosition(channel, BASS_ChannelSeconds2Bytes(channel, 1.0), BASS_POS_BYTE);
    BASS_ChannelPause(channel);
    const std::size_t atPause = listener.body().size();
    ASSERT_TRUE(waitFor([&] { return listener.body().size() > atPause + 60000; }, 60s)) << "silence goes on";
    EXPECT_FALSE(listener.isClosed());

    const auto pages = oggPages(listener.body());
    ASSERT_GT(pages.size(), 20U);
    for (std::size_t i = 1; i < pages.size(); ++i) {
        EXPECT_EQ(pages[i].serial, pages[0].serial);
        EXPECT_GE(pages[i].granule, pages[i - 1].granule);
    }
    const auto heard = decode(listener.body());
    EXPECT_GT(heard.size() / 2, 44100U * 6) << "three tracks, and silence";
    EXPECT_LT(dot(heard.data() + heard.size() - 44100, heard.data() + heard.size() - 44100, 44100),
              44100 * 4.0);
}

TEST_F(SharingTest, WithoutAProgramOrAPortPlaybackGoesOn) {
    play(support::writeWav("sweep.wav", sweeps(60, 44100)));
    for (int track = 0; track < 2; ++track) {
        share();
        EXPECT_EQ(encoder, 0U);
        EXPECT_EQ(port, 0U);
        EXPECT_EQ(BASS_Encode_IsActive(encoder), BASS_ACTIVE_STOPPED);
    }
    installEncoder();
    share();
    ASSERT_NE(port, 0U);
    const HENCODE second = BASS_Encode_Start(channel, commandLine, BASS_ENCODE_NOHEAD, nullptr, nullptr);
    const std::string taken = std::to_string(port);
    EXPECT_EQ(BASS_Encode_ServerInit(second, taken.c_str(), 40000, 40000, 0, nullptr, nullptr), 0U);
    EXPECT_EQ(BASS_Encode_IsActive(second), BASS_ACTIVE_PLAYING);
    EXPECT_TRUE(BASS_Encode_Stop(second));
    EXPECT_FALSE(BASS_Encode_Stop(second));
    for (const char* nonsense : {"", "x", "-1", "70000", "9090x"})
        EXPECT_EQ(BASS_Encode_ServerInit(encoder, nonsense, 40000, 40000, 0, nullptr, nullptr), 0U);
    EXPECT_TRUE(playsOn());
    const Listener listener(static_cast<int>(port));
    BASS_Encode_Stop(encoder);
    EXPECT_TRUE(waitFor([&] { return listener.isClosed(); }));
    EXPECT_TRUE(playsOn());
}

TEST_F(SharingTest, AnEncoderThatFailsOrStallsDisturbsNothing) {
    play(support::writeWav("sweep.wav", sweeps(120, 44100)));
    for (const char* script : {"exit 1", "exec sleep 1000", "exec cat /dev/zero", "exec cat", "kill -9 $$"}) {
        installScript(script);
        share();
        ASSERT_NE(encoder, 0U) << script;
        EXPECT_TRUE(playsOn()) << script;
        const bool runs = std::string(script).find("exec") == 0;
        const DWORD state = runs ? BASS_ACTIVE_PLAYING : BASS_ACTIVE_STOPPED;
        EXPECT_TRUE(waitFor([&] { return BASS_Encode_IsActive(encoder) == state; })) << script;
        BASS_Encode_Stop(encoder);
        std::filesystem::remove("oggenc");
    }
}

TEST_F(SharingTest, TheProgramInheritsNothingAndIsReaped) {
    play(support::writeWav("sweep.wav", sweeps(60, 44100)));
    installScript(
        "grep SigIgn /proc/self/status > signals; echo $$ > pid; exec ls /proc/self/fd > descriptors");
    std::signal(SIGPIPE, SIG_IGN);
    share();
    ASSERT_NE(encoder, 0U);
    std::signal(SIGPIPE, SIG_DFL);
    // The last is the folder that is listed.
    const auto listed = [] {
        return std::filesystem::exists("descriptors") && support::readFile("descriptors") == "0\n1\n2\n3\n";
    };
    EXPECT_TRUE(waitFor(listed)) << support::readFile("descriptors");
    const auto ignored = std::stoull(support::readFile("signals").substr(7), nullptr, 16);
    EXPECT_EQ(ignored & (1U << (SIGPIPE - 1)), 0U);
    const std::string pid = support::readFile("pid");
    BASS_Encode_Stop(encoder);
    EXPECT_FALSE(std::filesystem::exists("/proc/" + pid.substr(0, pid.find('\n'))));
}

} // namespace
