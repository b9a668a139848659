#include "platform/bass/bassenc.h"
#include "tests/bass/LibraryEnd.h"
#include "tests/bass/Listener.h"
#include "tests/bass/Sounds.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

using support::scratch;
using support::waitFor;
using namespace std::chrono_literals;

constexpr std::size_t rate = 44100;
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
        support::writeFile("recorded.ogg", ogg);
        const auto source = sounds::open("recorded.ogg");
        return source ? sounds::read(*source).samples : std::vector<float>();
    }

    /// The root mean square.
    static double loudness(std::span<const float> samples) {
        double squares = 0;
        for (const float sample : samples)
            squares += double(sample) * sample;
        return std::sqrt(squares / static_cast<double>(samples.size()));
    }

    HSTREAM channel = 0;
    HENCODE encoder = 0;
    DWORD port = 0;
};

TEST_F(SharingTest, ListenersGetTheSourceAtAnyVolume) {
    installEncoder();
    const auto sweep = sounds::sweep(30 * rate);
    play(support::writeWav("sweep.wav", sweep));
    BASS_ChannelSetAttribute(channel, BASS_ATTRIB_VOL, 0.1F);
    BASS_ChannelSetAttribute(channel, BASS_ATTRIB_PAN, -1.0F);
    share();
    ASSERT_NE(port, 0U);
    const Listener early(static_cast<int>(port));
    ASSERT_TRUE(waitFor([&] { return early.body().size() > 80000; }, 60s));
    const Listener late(static_cast<int>(port));
    ASSERT_TRUE(waitFor([&] { return late.body().size() > 60000; }, 60s));

    const std::vector<float> source = sounds::exactly(sweep);
    for (const auto* listener : {&early, &late}) {
        const auto recorded = decode(listener->body());
        ASSERT_GT(recorded.size(), 3 * rate);
        // The first packet after a join is only half there.
        const auto later = std::span(recorded).subspan(rate, 2 * rate);
        std::size_t place = 0;
        float most = 0;
        for (std::size_t at = 0; at < 20 * rate * 2; at += 2) {
            float here = 0;
            for (std::size_t i = 0; i < 16384; i += 31) // enough to tell one place from the others
                here += later[i] * source[at + i];
            if (here > most) place = at;
            most = std::max(here, most);
        }
        const auto played = std::span(source).subspan(place, later.size());
        EXPECT_GT(sounds::correlation(played, later, 0), 0.99);
        EXPECT_NEAR(loudness(later) / loudness(played), 1.0, 0.02); // of peaks a codec promises nothing
    }
}

TEST_F(SharingTest, StaysOneStreamAcrossTracksPausesAndSeeks) {
    installEncoder();
    play(support::writeWav("mono.wav", sounds::sweep(2 * 22050, 22050, 1), 22050, 1));
    share();
    ASSERT_NE(port, 0U);
    const Listener listener(static_cast<int>(port));
    const auto endOf = [this] {
        return waitFor([this] { return BASS_ChannelIsActive(channel) == BASS_ACTIVE_STOPPED; }, 60s);
    };
    for (const auto& next : {support::encode("high.flac", sounds::sweep(2 * 96000, 96000), 96000),
                             support::encode("last.mp3", sounds::sweep(2 * rate))}) {
        ASSERT_TRUE(endOf());
        play(next);
        EXPECT_TRUE(BASS_Encode_SetChannel(encoder, channel));
    }
    BASS_ChannelSetPosition(channel, BASS_ChannelSeconds2Bytes(channel, 1.0), BASS_POS_BYTE);
    BASS_ChannelPause(channel);
    const std::size_t atPause = listener.body().size();
    ASSERT_TRUE(waitFor([&] { return listener.body().size() > atPause + 60000; }, 60s)) << "silence goes on";
    EXPECT_FALSE(listener.isClosed());

    const std::string stream = listener.body();
    for (auto page = stream.find("OggS"); page != std::string::npos; page = stream.find("OggS", page + 1))
        EXPECT_EQ(stream.substr(page + 14, 4), stream.substr(14, 4)) << "the same serial number";
    const auto recorded = decode(stream);
    ASSERT_GT(recorded.size(), 6 * rate * 2) << "three tracks, and silence";
    EXPECT_LT(std::ranges::max(std::span(recorded).last(rate)), 0.001F);
}

TEST_F(SharingTest, PlaybackContinuesWithoutEncoderOrPort) {
    play(support::writeWav("sweep.wav", sounds::sweep(60 * rate)));
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
    EXPECT_TRUE(BASS_Encode_ServerSetName(encoder, ("A\r\nSet-Cookie: " + std::string(174, 'x') +
                                                    "\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9")
                                                       .c_str()));
    const Listener listener(static_cast<int>(port));
    EXPECT_TRUE(waitFor([&] { return BASS_Encode_ServerGetCount(encoder) == 1; }));
    const std::string name =
        "\r\nicy-name: A  Set-Cookie: " + std::string(174, 'x') + "\u00e9\u00e9\u00e9\u00e9\u00e9\r\n";
    EXPECT_TRUE(waitFor([&] { return listener.received().find(name) != std::string::npos; }))
        << listener.received();
    BASS_Encode_Stop(encoder);
    EXPECT_FALSE(BASS_Encode_ServerSetName(encoder, "gone"));
    EXPECT_EQ(BASS_Encode_ServerGetCount(encoder), 0U);
    EXPECT_TRUE(waitFor([&] { return listener.isClosed(); }));
    EXPECT_TRUE(playsOn());
}

TEST_F(SharingTest, AFailingOrStalledEncoderDoesNotDisturbPlayback) {
    play(support::writeWav("sweep.wav", sounds::sweep(120 * rate)));
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

TEST_F(SharingTest, TheEncoderInheritsNoDescriptorsAndIsReaped) {
    play(support::writeWav("sweep.wav", sounds::sweep(60 * rate)));
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
