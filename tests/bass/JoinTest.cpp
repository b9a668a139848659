// Streams that follow one another, on outputs without a device. CTest runs each case in its own process,
// because the library opens its output once.

#include "platform/bass/Library.h"
#include "platform/bass/Taps.h"
#include "platform/bass/bass.h"
#include "tests/bass/LibraryEnd.h"
#include "tests/bass/Sounds.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using support::waitFor;
using Samples = std::vector<std::int16_t>;

std::filesystem::path recording() {
    return support::scratch() / "recording.wav";
}

/// The recording, after the output has stopped.
std::vector<float> recorded(std::size_t samples) {
    constexpr std::size_t header = 44;
    std::string bytes;
    EXPECT_TRUE(waitFor([&] {
        bytes = support::readFile(recording());
        return bytes.size() >= header + samples * sizeof(float);
    }));
    std::vector<float> frames((bytes.size() - std::min(bytes.size(), header)) / sizeof(float));
    std::memcpy(frames.data(), bytes.data() + header, frames.size() * sizeof(float));
    return frames;
}

std::vector<float> decoded(const std::string& path) {
    const auto opened = bass::openFile(path, bass::Format::any, std::make_shared<bass::Cancel>());
    return opened.source ? sounds::read(*opened.source).samples : std::vector<float>();
}

/// Plays files one after the other as a player does: at the end of one it frees it, creates the stream of the
/// next one, and names the one after that.
class Player {
public:
    explicit Player(std::vector<std::string> files) : m_files(std::move(files)) { s_player = this; }

    /// Everything up to the first end happens here, the rest on the sync thread.
    void start() {
        create();
        play();
    }
    void create() {
        m_stream = BASS_StreamCreateFile(0, m_files[m_ended].c_str(), 0, 0, 0);
        BASS_ChannelSetSync(m_stream, BASS_SYNC_END | BASS_SYNC_ONETIME, 0, &Player::onEnd, nullptr);
        if (m_ended + 1 < m_files.size())
            BASS_ChannelSetNext(m_stream, BASS_SOURCE_FILE, m_files[m_ended + 1].c_str());
    }
    void play() { BASS_ChannelPlay(m_stream, 0); }
    HSTREAM stream() const { return m_stream; }
    std::size_t ended() const { return m_ended; }
    bool isDone() const { return m_ended == m_files.size(); }

private:
    static void onEnd(HSYNC, DWORD stream, DWORD, void*) {
        BASS_StreamFree(stream);
        if (s_player->m_ended + 1 < s_player->m_files.size()) {
            const std::size_t next = s_player->m_ended + 1;
            s_player->m_ended = next;
            s_player->create();
            s_player->play();
        } else {
            ++s_player->m_ended;
        }
    }

    static inline Player* s_player = nullptr;
    std::vector<std::string> m_files;
    std::atomic<HSTREAM> m_stream{0};
    std::atomic<std::size_t> m_ended{0};
};

void open(const std::string& output) {
    setenv("TUL_AUDIO", output.c_str(), 1);
    ASSERT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
}

/// Frames of silence at its end are those that the last chunk was filled up with.
void expectPlayed(const std::vector<float>& expected) {
    auto out = recorded(expected.size());
    ASSERT_GE(out.size(), expected.size());
    const auto differ = std::mismatch(expected.begin(), expected.end(), out.begin());
    EXPECT_EQ(differ.first - expected.begin(), static_cast<std::ptrdiff_t>(expected.size()));
    out.erase(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(expected.size()));
    EXPECT_TRUE(std::ranges::all_of(out, [](float sample) { return sample == 0; }));
}

TEST(JoinTest, FiftyTracksOfAnyFormatJoinWithoutLossOrGap) {
    const struct {
        const char* name;
        int rate;
        int channels;
        std::size_t frames;
    } kinds[] = {{"a.wav", 44100, 2, 30011}, {"b.flac", 48000, 2, 20000}, {"c.mp3", 44100, 2, 25000},
                 {"d.ogg", 22050, 1, 11025}, {"e.opus", 48000, 2, 19999}, {"f.wv", 96000, 1, 40000},
                 {"g.aiff", 8000, 2, 4001},  {"h.m4a", 44100, 2, 22050},  {"i.wav", 44100, 1, 900}};
    std::vector<std::string> files;
    std::vector<float> expected;
    for (int i = 0; i < 51; ++i) {
        const auto& kind = kinds[static_cast<std::size_t>(i) % std::size(kinds)];
        if (i < static_cast<int>(std::size(kinds)))
            files.push_back(support::encode(
                kind.name, support::noise(kind.frames, kind.channels, static_cast<std::uint32_t>(i + 1)),
                kind.rate, kind.channels));
        else
            files.push_back(files[static_cast<std::size_t>(i) - std::size(kinds)]);
        const auto samples = decoded(files.back());
        ASSERT_FALSE(samples.empty()) << kind.name;
        expected.insert(expected.end(), samples.begin(), samples.end());
    }
    open("wav:" + recording().string());
    Player player(files);
    player.start();
    ASSERT_TRUE(waitFor([&] { return player.isDone(); }, std::chrono::seconds(60)));
    expectPlayed(expected);
}

TEST(JoinTest, ASourceThatCannotBeOpenedEndsItsStream) {
    const auto first = support::writeWav(support::scratch() / "first.wav", support::noise(30000));
    const auto last = support::writeWav(support::scratch() / "last.wav", support::noise(30000, 2, 2));
    const auto missing = (support::scratch() / "missing.wav").string();
    open("wav:" + recording().string());
    Player player({first, missing, missing, last});
    player.start();
    ASSERT_TRUE(waitFor([&] { return player.isDone(); }));
    auto out = recorded(2 * 60000);
    const auto end = out.begin() + 2 * 30000;
    EXPECT_TRUE(std::equal(out.begin(), end, decoded(first).begin()));
    const auto next = std::find_if(end, out.end(), [](float sample) { return sample != 0; });
    const auto expected = decoded(last);
    ASSERT_GE(out.end() - next, static_cast<std::ptrdiff_t>(expected.size()));
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), next));
}

std::atomic<int> ends{0};
void countEnd(HSYNC, DWORD, DWORD, void*) {
    ++ends;
}

TEST(JoinTest, WhatFollowsMayChangeUntilItIsPlayed) {
    const auto first = support::writeWav(support::scratch() / "first.wav", support::noise(30000));
    const auto second = support::writeWav(support::scratch() / "second.wav", support::noise(30000, 2, 2));
    const auto third = support::writeWav(support::scratch() / "third.wav", support::noise(30000, 2, 3));
    open("wav:" + recording().string());
    const HSTREAM stream = BASS_StreamCreateFile(0, first.c_str(), 0, 0, 0);
    BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &countEnd, nullptr);
    ASSERT_TRUE(BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, second.c_str()));
    ASSERT_TRUE(BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, second.c_str())) << "the same again";
    ASSERT_TRUE(BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, third.c_str()));
    EXPECT_FALSE(BASS_ChannelSetNext(stream, BASS_SOURCE_URL, "ftp://host/file"));
    EXPECT_FALSE(BASS_ChannelSetNext(stream, 7, first.c_str()));
    EXPECT_FALSE(BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, nullptr));
    BASS_ChannelSetAttribute(stream, BASS_ATTRIB_VOL, 0.5F);
    BASS_ChannelPlay(stream, 0);
    ASSERT_TRUE(waitFor([] { return ends == 1; }));
    BASS_StreamFree(stream);
    const HSTREAM next = BASS_StreamCreateFile(0, third.c_str(), 0, 0, 0);
    EXPECT_EQ(BASS_ChannelIsActive(next), BASS_ACTIVE_PLAYING) << "it plays already";
    float gain = 0;
    EXPECT_TRUE(BASS_ChannelGetAttribute(next, BASS_ATTRIB_VOL, &gain));
    EXPECT_EQ(gain, 0.5F);
    BASS_ChannelSetSync(next, BASS_SYNC_END, 0, &countEnd, nullptr);
    ASSERT_TRUE(waitFor([] { return ends == 2; }));

    auto expected = decoded(first);
    const auto behind = decoded(third);
    expected.insert(expected.end(), behind.begin(), behind.end());
    for (float& sample : expected)
        sample *= 0.5F;
    expectPlayed(expected);
}

TEST(JoinTest, APreparedStreamIsUsedByAManualStart) {
    const auto first = support::writeWav(support::scratch() / "first.wav", support::noise(44100 * 30));
    const auto second = support::writeWav(support::scratch() / "second.wav", support::noise(30000, 2, 2));
    open("null");
    HSTREAM stream = BASS_StreamCreateFile(0, first.c_str(), 0, 0, 0);
    BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, second.c_str());
    BASS_ChannelPlay(stream, 0);
    ASSERT_TRUE(waitFor([&] { return BASS_ChannelGetPosition(stream, BASS_POS_BYTE) > 0; }));
    BASS_StreamFree(stream); // long before its end
    stream = BASS_StreamCreateFile(0, second.c_str(), 0, 0, 0);
    EXPECT_EQ(BASS_ChannelIsActive(stream), BASS_ACTIVE_STOPPED);
    BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &countEnd, nullptr);
    EXPECT_TRUE(BASS_ChannelPlay(stream, 0));
    EXPECT_TRUE(waitFor([] { return ends == 1; }));
    EXPECT_EQ(BASS_ChannelGetPosition(stream, BASS_POS_BYTE), 30000U * 8);
}

TEST(JoinTest, AFollowerThatEndedBeforeItWasCreatedIsNotPlayedAgain) {
    const auto first = support::writeWav(support::scratch() / "first.wav", support::noise(20000));
    const auto second = support::writeWav(support::scratch() / "second.wav", support::noise(300, 2, 2));
    const auto silence = support::writeWav(support::scratch() / "silence.wav", Samples(2 * 44100 * 30));
    open("null");
    const HSTREAM clock = BASS_StreamCreateFile(0, silence.c_str(), 0, 0, 0);
    BASS_ChannelPlay(clock, 0);
    HSTREAM stream = BASS_StreamCreateFile(0, first.c_str(), 0, 0, 0);
    BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &countEnd, nullptr);
    BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, second.c_str());
    BASS_ChannelPlay(stream, 0);
    ASSERT_TRUE(waitFor([] { return ends == 1; }));
    const QWORD end = BASS_ChannelGetPosition(clock, BASS_POS_BYTE);
    ASSERT_TRUE(waitFor([&] { return BASS_ChannelGetPosition(clock, BASS_POS_BYTE) > end + 8 * 8820; }));
    BASS_StreamFree(stream);
    stream = BASS_StreamCreateFile(0, second.c_str(), 0, 0, 0);
    EXPECT_TRUE(BASS_ChannelPlay(stream, 0));
    EXPECT_EQ(BASS_ChannelIsActive(stream), BASS_ACTIVE_STOPPED);
    BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &countEnd, nullptr);
    EXPECT_TRUE(waitFor([] { return ends == 2; })) << "its end is reported all the same";
    EXPECT_EQ(BASS_ChannelGetPosition(stream, BASS_POS_BYTE), 300U * 8);
}

TEST(JoinTest, ASlideContinuesInTheFollowingStream) {
    const auto first = support::writeWav(support::scratch() / "first.wav", Samples(2 * 22050, 16384));
    const auto second = support::writeWav(support::scratch() / "second.wav", Samples(2 * 44100, 16384));
    open("wav:" + recording().string());
    Player player({first, second});
    player.create();
    BASS_ChannelSlideAttribute(player.stream(), BASS_ATTRIB_VOL, 0.0F, 1000); // of a stopped one: waits
    player.play();
    ASSERT_TRUE(waitFor([&] { return player.isDone(); }));
    const auto out = recorded(2 * 66150);
    const float steepest = 0.5F / 44100 * 1.5F;
    EXPECT_NEAR(out[0], 0.5F, steepest);
    for (std::size_t i = 2; i < 2 * 44100; ++i)
        ASSERT_NEAR(out[i], out[i - 2], steepest) << i;
    EXPECT_EQ(out[2 * 60000], 0.0F);
}

/// Holds up the audio thread at one frame: until a control call has returned, or has clearly waited for it.
class HoldingTap : public bass::SampleTap {
public:
    explicit HoldingTap(std::size_t frame) : m_frame(frame) {}
    void tapped(std::span<const bass::Frame> frames) noexcept override {
        m_count += frames.size();
        if (m_count < m_frame || m_held.exchange(true)) return;
        static_cast<void>(waitFor([this] { return m_released.load(); }, std::chrono::milliseconds(200)));
    }
    bool holds() const { return m_held; }
    void release() { m_released = true; }
    std::size_t count() const { return m_count; }

private:
    const std::size_t m_frame;
    std::atomic<std::size_t> m_count{0};
    std::atomic<bool> m_held{false};
    std::atomic<bool> m_released{false};
};

TEST(JoinTest, AVolumeSetDuringAJoinAppliesToBothStreams) {
    constexpr std::size_t frames = 22050;
    const auto first = support::writeWav(support::scratch() / "first.wav", Samples(2 * frames, 16384));
    const auto second = support::writeWav(support::scratch() / "second.wav", Samples(2 * frames, 16384));
    open("wav:" + recording().string());
    static HoldingTap tap(frames); // within the callback that joins, at the last frames of the first
    Player player({first, second});
    player.start();
    const HSTREAM stream = player.stream();
    ASSERT_TRUE(bass::setTap(stream, tap));
    ASSERT_TRUE(waitFor([] { return tap.holds(); }));
    BASS_ChannelSetAttribute(stream, BASS_ATTRIB_VOL, 0.5F);
    tap.release();
    ASSERT_TRUE(waitFor([&] { return player.isDone(); }));
    const auto out = recorded(4 * frames);
    EXPECT_EQ(out[2 * frames - 2], 0.5F);
    EXPECT_EQ(out[4 * frames - 2], 0.25F);
}

/// Silence that reports its end late: when all of it has been mixed.
class LateEndSource : public bass::Source {
public:
    static constexpr std::size_t length = 22050;
    static inline std::atomic<bool> mayEnd{false};

    bass::ReadResult read(std::span<float> out) override {
        const std::size_t frames = std::min(out.size() / 2, m_left);
        if (frames == 0) {
            EXPECT_TRUE(waitFor([] { return mayEnd.load(); }));
        }
        std::fill_n(out.begin(), 2 * frames, 0.0F);
        m_left -= frames;
        return {frames, frames > 0 ? bass::ReadResult::Status::more : bass::ReadResult::Status::end};
    }
    bool seek(std::int64_t) override { return false; }
    std::optional<std::int64_t> lengthFrames() const override { return length; }

private:
    std::size_t m_left = length;
};

TEST(JoinTest, AnEndDuringAJoinKeepsTheFollowingStream) {
    const auto second = support::writeWav(support::scratch() / "second.wav", Samples(2 * 44100, 16384));
    open("null");
    bass::Library::instance().openWith([](const auto& name, const auto& cancel) {
        if (name.text != "late") return bass::openByName(name, cancel);
        return bass::OpenedSource{std::make_unique<LateEndSource>()};
    });
    static HoldingTap tap(LateEndSource::length + 1);
    const HSTREAM stream = BASS_StreamCreateFile(0, "late", 0, 0, 0);
    ASSERT_TRUE(bass::setTap(stream, tap));
    BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &countEnd, nullptr);
    BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, second.c_str());
    BASS_ChannelPlay(stream, 0);
    ASSERT_TRUE(
        waitFor([&] { return BASS_ChannelGetPosition(stream, BASS_POS_BYTE) == LateEndSource::length * 8; }));
    LateEndSource::mayEnd = true;
    ASSERT_TRUE(waitFor([] { return tap.holds(); }));
    BASS_StreamCreateFile(0, (support::scratch() / "missing.wav").c_str(), 0, 0, 0); // wakes the sync thread
    ASSERT_TRUE(waitFor([] { return ends == 1; }));
    tap.release();
    EXPECT_TRUE(waitFor([] { return tap.count() > LateEndSource::length + 22050; }))
        << "without a further call";
}

std::atomic<HSTREAM> current{0};
std::array<std::string, 3> tracks;

/// What a player does when a track ends, in the sync itself.
void startAnother(HSYNC, DWORD ended, DWORD, void*) {
    const std::size_t which = static_cast<std::size_t>(++ends);
    BASS_StreamFree(ended);
    const HSTREAM stream = BASS_StreamCreateFile(0, tracks[which % tracks.size()].c_str(), 0, 0, 0);
    BASS_ChannelSetSync(stream, BASS_SYNC_END | BASS_SYNC_ONETIME, 0, &startAnother, nullptr);
    BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, tracks[(which + 1) % tracks.size()].c_str());
    BASS_ChannelPlay(stream, 0);
    current = stream;
}

TEST(JoinTest, AnyOrderOfCallsKeepsPlaying) {
    for (std::size_t i = 0; i < tracks.size(); ++i)
        tracks[i] = support::writeWav(support::scratch() / ("track" + std::to_string(i) + ".wav"),
                                      support::noise(3000 + 7000 * i));
    open("null");
    startAnother(0, 0, 0, nullptr);
    std::atomic<bool> done{false};
    std::vector<std::jthread> users;
    for (unsigned user = 0; user < 2; ++user) {
        users.emplace_back([&, user] {
            std::mt19937 random(user);
            while (!done) {
                const HSTREAM stream = current;
                switch (random() % 8) {
                case 0:
                    BASS_ChannelSetPosition(stream, random() % 20000 * 8, BASS_POS_BYTE);
                    break;
                case 1:
                    BASS_ChannelPause(stream);
                    break;
                case 2:
                    BASS_ChannelSlideAttribute(stream, BASS_ATTRIB_VOL, 0.0F, random() % 50);
                    break;
                case 3:
                    BASS_ChannelSetAttribute(stream, BASS_ATTRIB_VOL, 1.0F);
                    break;
                case 4:
                    BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, tracks[random() % tracks.size()].c_str());
                    break;
                case 5:
                    BASS_ChannelSetNext(stream, BASS_SOURCE_NONE, nullptr);
                    break;
                case 6:
                    BASS_ChannelGetPosition(stream, BASS_POS_BYTE);
                    break;
                default:
                    BASS_ChannelPlay(stream, 0);
                }
                std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
            }
        });
    }
    EXPECT_TRUE(waitFor([] { return ends >= 20; }, std::chrono::seconds(60)));
    done = true;
    users.clear();
    // After any sequence of calls, tracks must follow one another.
    const int before = ends;
    EXPECT_TRUE(waitFor([&] {
        BASS_ChannelPlay(current, 0);
        return ends > before + 3;
    }));
}

} // namespace
