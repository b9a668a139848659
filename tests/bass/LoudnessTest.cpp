// ReplayGain, from tags written by real taggers to the played samples. CTest runs each case in its own
// process, because the library opens its output once.

#include "platform/bass/bass.h"
#include "tests/bass/LibraryEnd.h"
#include "tests/bass/Sounds.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace {

using bass::ReplayGain;
using bass::ReplayGainMode;
using support::waitFor;
using Samples = std::vector<std::int16_t>;

constexpr std::size_t frames = 22050;
constexpr float level = 0.5F;
const Samples steady(2 * frames, 16384);

/// Tags a file by a line of Python, in which `f` is its name.
void tag(const std::string& file, const std::string& line) {
    support::run({"/usr/bin/python3", "-c",
                  "import sys, mutagen, struct\n"
                  "from mutagen.id3 import ID3, TXXX, RVA2, APIC\n"
                  "from mutagen.apev2 import APEv2\n"
                  "from mutagen.mp4 import MP4, MP4FreeForm\n"
                  "from mutagen.ogg import OggPage\n"
                  "f = sys.argv[1]\n" +
                      line,
                  file});
}

std::string comments(const char* album = "-3.5 dB") {
    return std::string("a = mutagen.File(f); a['REPLAYGAIN_TRACK_GAIN'] = '-6.00 dB'; "
                       "a['replaygain_track_peak'] = '0.5'; a['REPLAYGAIN_ALBUM_GAIN'] = '") +
           album + "'; a['REPLAYGAIN_ALBUM_PEAK'] = '0.75'; a.save()";
}

const std::string frameTexts =
    "TXXX(encoding=e, desc='replaygain_TRACK_gain', text='-6.00 dB'), TXXX(encoding=e, "
    "desc='REPLAYGAIN_TRACK_PEAK', text='0.5'), TXXX(encoding=e, desc='REPLAYGAIN_ALBUM_GAIN', text='-3.5 "
    "dB'), TXXX(encoding=e, desc='REPLAYGAIN_ALBUM_PEAK', text='0.75')";
const std::string picture = "APIC(mime='image/png', type=3, data=b'x' * 200000)";
std::string id3(const std::string& encoding, const std::string& save) {
    return "e = " + encoding + "\nt = ID3()\nfor frame in (" + picture + ", " + frameTexts +
           "): t.add(frame)\n" + save;
}

const ReplayGain tagged{.trackGain = -6.0F, .albumGain = -3.5F, .trackPeak = 0.5F, .albumPeak = 0.75F};

TEST(LoudnessTest, EveryFormatsTagsAreRead) {
    const ReplayGain opus{.trackGain = -6.0F, .albumGain = -3.5F, .trackPeak = {}, .albumPeak = {}};
    const ReplayGain relative{.trackGain = -6.0F, .albumGain = -3.5F, .trackPeak = {}, .albumPeak = {}};
    const std::string mp4 =
        "a = MP4(f); p = '----:com.apple.iTunes:'\n"
        "for k, v in (('replaygain_track_gain', b'-6.00 dB'), ('replaygain_track_peak', b'0.5'), "
        "('REPLAYGAIN_ALBUM_GAIN', b'-3.5 dB'), ('REPLAYGAIN_ALBUM_PEAK', b'0.75')): a[p + k] = "
        "MP4FreeForm(v)\na.save()";
    const std::string ape = "t = APEv2(); t['Cover Art (Front)'] = b'x' * 200000\n"
                            "for k, v in (('REPLAYGAIN_TRACK_GAIN', '-6.00 dB'), ('Replaygain_Track_Peak', "
                            "'0.5'), ('REPLAYGAIN_ALBUM_GAIN', '-3.5 dB'), ('REPLAYGAIN_ALBUM_PEAK', "
                            "'0.75')): t[k] = v\nt.save(f)";
    const std::string unsynchronised = // as a whole, which 0xFF 0xFE of UTF-16 makes necessary
        "b = open(f, 'rb').read(); n = sum((b[6 + i] & 127) << (21 - 7 * i) for i in range(4))\n"
        "x = b[10:10 + n].replace(b'\\xff', b'\\xff\\0')\n"
        "s = bytes((len(x) >> (21 - 7 * i)) & 127 for i in range(4))\n"
        "open(f, 'wb').write(b[:5] + b'\\x80' + s + x + b[10 + n:])";
    const struct {
        const char* name;
        std::string tagging;
        ReplayGain expected = tagged;
    } cases[] = {
        {"a.flac", comments()},
        {"a.ogg", comments()},
        {"a.wv", comments()},
        {"a.m4a", mp4},
        {"v3.mp3", id3("1", "t.save(f, v2_version=3)")},
        {"v4.mp3", id3("3", "t.save(f)")},
        {"v3-latin.mp3", id3("0", "t.save(f, v2_version=3)")},
        {"before.flac", id3("3", "t.save(f)")},
        {"unsynchronised.mp3", "e = 1\nt = ID3()\nfor frame in (" + frameTexts +
                                   "): t.add(frame)\nt.save(f, v2_version=3)\n" + unsynchronised},
        {"ape.mp3", ape},
        {"ape-and-v1.mp3", ape + "\nopen(f, 'ab').write(b'TAG' + bytes(125))"},
        {"chunk.aiff", id3("3", "a = mutagen.File(f); a.add_tags(); a.tags.update(t); a.save()")},
        {"relative.mp3",
         "t = ID3(); t.add(RVA2(desc='track', channel=1, gain=-6, peak=0.5)); "
         "t.add(RVA2(desc='album', channel=1, gain=-3.5, peak=0.5)); t.save(f)",
         relative},
        {"a.opus",
         "a = mutagen.File(f); a['R128_TRACK_GAIN'] = '-2816'; a['R128_ALBUM_GAIN'] = '-2176'; "
         "a['REPLAYGAIN_TRACK_GAIN'] = '9 dB'; a.save()",
         opus},
        {"hostile.flac",
         "a = mutagen.File(f); a['REPLAYGAIN_TRACK_GAIN'] = '1e9 dB'; "
         "a['REPLAYGAIN_TRACK_PEAK'] = '-1'; a['REPLAYGAIN_ALBUM_GAIN'] = 'nan dB'; "
         "a['REPLAYGAIN_ALBUM_PEAK'] = 'inf'; a['R128_TRACK_GAIN'] = '1,000,000'; a.save()",
         {}},
        {"blanks.flac",
         "a = mutagen.File(f); a['REPLAYGAIN_TRACK_GAIN'] = ' +1,5DB '; "
         "a['REPLAYGAIN_TRACK_PEAK'] = '32767'; a['REPLAYGAIN_ALBUM_GAIN'] = '2 dBA'; a.save()",
         {.trackGain = 1.5F, .albumGain = {}, .trackPeak = {}, .albumPeak = {}}},
        {"bare.mp3", "pass", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto file = support::encode(c.name, support::noise(frames)).string();
        tag(file, c.tagging);
        const auto source = sounds::open(file);
        ASSERT_TRUE(source);
        EXPECT_EQ(source->replayGain(), c.expected) << source->replayGain().trackGain.value_or(99);
    }
}

/// Tags written by real loudness scanners.
TEST(LoudnessTest, ScannersTagsAreRead) {
    const auto flac = support::encode("scanned.flac", support::noise(10 * frames)).string();
    support::run({"metaflac", "--add-replay-gain", flac});
    const auto wavPack = support::encode("scanned.wv", support::noise(10 * frames)).string();
    support::run({"wvgain", "-q", wavPack});
    for (const auto& file : {flac, wavPack}) {
        const auto source = sounds::open(file);
        ASSERT_TRUE(source) << file;
        const ReplayGain gain = source->replayGain();
        EXPECT_LT(gain.trackGain.value_or(0), -5) << file;
        EXPECT_NEAR(gain.trackPeak.value_or(0), 1, 0.01) << file;
    }
}

TEST(LoudnessTest, GainIsLimitedByThePeakAndFallsBack) {
    const auto linear = [](float decibels) { return std::pow(10.0F, decibels / 20); };
    constexpr auto track = ReplayGainMode::track, album = ReplayGainMode::album;
    const struct {
        ReplayGain tags;
        ReplayGainMode mode;
        float gain;
    } cases[] = {
        {tagged, ReplayGainMode::off, 1},
        {tagged, track, linear(-6)},
        {tagged, album, linear(-3.5F)},
        {{}, track, 1},
        {{.trackGain = 9.0F, .albumGain = {}, .trackPeak = 0.5F, .albumPeak = {}}, track, 2},
        {{.trackGain = 9.0F, .albumGain = {}, .trackPeak = 0.5F, .albumPeak = {}}, album, 2},
        {{.trackGain = {}, .albumGain = -2.0F, .trackPeak = {}, .albumPeak = 0.5F}, track, linear(-2)},
        {{.trackGain = 1.0F, .albumGain = 9.0F, .trackPeak = 0.2F, .albumPeak = 0.8F}, album, 1.25F},
        {{.trackGain = 9.0F, .albumGain = {}, .trackPeak = {}, .albumPeak = 0.5F}, track, 2},
        {{.trackGain = 9.0F, .albumGain = {}, .trackPeak = {}, .albumPeak = {}}, track, 1},
        {{.trackGain = -1.0F, .albumGain = {}, .trackPeak = 1.25F, .albumPeak = {}}, track, 0.8F},
    };
    for (const auto& c : cases)
        EXPECT_FLOAT_EQ(loudnessOf(c.tags, c.mode).gain, c.gain) << &c - cases;
}

// ---- played ----

std::string recording() {
    return (support::scratch() / "recording.wav").string();
}

std::vector<std::string> files;
std::atomic<std::size_t> started{0};
std::atomic<bool> done{false};
DWORD modeOfSecond = BASS_REPLAYGAIN_OFF;

void startNext(HSYNC, DWORD ended, DWORD, void*) {
    BASS_StreamFree(ended);
    if (started == files.size()) {
        done = true;
        return;
    }
    if (started == 1) BASS_SetConfig(BASS_CONFIG_REPLAYGAIN, modeOfSecond);
    const HSTREAM stream = BASS_StreamCreateFile(0, files[started++].c_str(), 0, 0, 0);
    BASS_ChannelSetSync(stream, BASS_SYNC_END | BASS_SYNC_ONETIME, 0, &startNext, nullptr);
    if (started < files.size()) BASS_ChannelSetNext(stream, BASS_SOURCE_FILE, files[started].c_str());
    BASS_ChannelPlay(stream, 0);
}

/// One channel of what is played when the files follow one another.
std::vector<float> played(std::vector<std::string> list, DWORD mode, DWORD later) {
    setenv("TUL_AUDIO", ("wav:" + recording()).c_str(), 1);
    EXPECT_TRUE(BASS_SetConfig(BASS_CONFIG_REPLAYGAIN, mode));
    EXPECT_FALSE(BASS_SetConfig(BASS_CONFIG_REPLAYGAIN, 3));
    EXPECT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
    files = std::move(list);
    modeOfSecond = later;
    startNext(0, 0, 0, nullptr);
    EXPECT_TRUE(waitFor([] { return done.load(); }));
    BASS_Free();
    constexpr std::size_t header = 44;
    const std::string bytes = support::readFile(recording()).substr(header);
    std::vector<float> left(bytes.size() / sizeof(bass::Frame));
    for (std::size_t i = 0; i < left.size(); ++i)
        std::memcpy(&left[i], &bytes[i * sizeof(bass::Frame)], sizeof(float));
    EXPECT_GE(left.size(), files.size() * frames);
    left.resize(files.size() * frames);
    return left;
}

/// -6 dB; -12 dB, as album -3 dB; none; 12 dB that half of full scale limits to 2.
std::vector<std::string> taggedTracks() {
    const struct {
        const char* name;
        const char* tags;
    } tracks[] = {{"1.flac", "a['REPLAYGAIN_TRACK_GAIN'] = '-6 dB'; a['REPLAYGAIN_ALBUM_GAIN'] = '-3 dB'"},
                  {"2.flac", "a['REPLAYGAIN_TRACK_GAIN'] = '-12 dB'; a['REPLAYGAIN_ALBUM_GAIN'] = '-3 dB'"},
                  {"3.flac", "pass"},
                  {"4.flac", "a['REPLAYGAIN_TRACK_GAIN'] = '12 dB'; a['REPLAYGAIN_TRACK_PEAK'] = '0.5'"},
                  {"5.flac", "a['REPLAYGAIN_TRACK_GAIN'] = '0 dB'; a['REPLAYGAIN_TRACK_PEAK'] = '1'"}};
    std::vector<std::string> made;
    for (const auto& track : tracks) {
        made.push_back(support::encode(track.name, steady).string());
        tag(made.back(), std::string("a = mutagen.File(f); ") + track.tags + "; a.save()");
    }
    return made;
}

TEST(LoudnessTest, EachTrackStartsWithItsOwnGain) {
    constexpr std::size_t ramp = 220;
    const auto out = played(taggedTracks(), BASS_REPLAYGAIN_TRACK, BASS_REPLAYGAIN_TRACK);
    const float gains[] = {0.501187F, 0.251189F, 1, 2, 1};
    for (std::size_t track = 0; track < std::size(gains); ++track) {
        const std::size_t first = track * frames;
        for (std::size_t i = first + ramp; i < first + frames; ++i)
            ASSERT_NEAR(out[i], level * gains[track], 1e-5F) << track << " at " << i - first;
    }
    for (const std::size_t join : {frames, 2 * frames, 3 * frames})
        for (std::size_t i = join; i < join + ramp; ++i)
            ASSERT_LT(std::abs(out[i] - out[i - 1]), 2.0F * level / ramp) << "a click at " << i;
    // Down to what does not clip it: at once.
    EXPECT_FLOAT_EQ(out[4 * frames], level);
}

TEST(LoudnessTest, AChangeWhileATrackPlaysSlides) {
    const auto out = played(taggedTracks(), BASS_REPLAYGAIN_TRACK, BASS_REPLAYGAIN_ALBUM);
    EXPECT_NEAR(out[frames - 1], level * 0.501187F, 1e-5F);
    EXPECT_NEAR(out[2 * frames - 1], level * 0.707946F, 1e-5F) << "the album's";
    for (std::size_t i = frames; i < 2 * frames; ++i)
        ASSERT_LT(std::abs(out[i] - out[i - 1]), level / 220) << i;
}

TEST(LoudnessTest, OffLeavesSamplesUnchanged) {
    auto list = taggedTracks();
    const std::string& loud = list.emplace_back(support::encode("6.flac", support::noise(frames)).string());
    support::run({"metaflac", "--add-replay-gain", loud});
    const auto out = played(list, BASS_REPLAYGAIN_OFF, BASS_REPLAYGAIN_OFF);
    std::vector<float> expected;
    for (const auto& file : list) {
        const auto stored = sounds::read(*sounds::open(file)).samples;
        for (std::size_t i = 0; i < stored.size(); i += 2)
            expected.push_back(stored[i]);
    }
    EXPECT_EQ(out, expected);
}

/// The gain in Opus' header is part of the sound, with any setting, and its tags are relative to that.
TEST(LoudnessTest, TheHeaderGainOfOpusIsPlayed) {
    const auto file = support::encode("header.opus", support::sine(441, frames)).string();
    const auto loudest = [&] {
        const auto samples = sounds::read(*sounds::open(file)).samples;
        return *std::ranges::max_element(samples);
    };
    const float before = loudest();
    tag(file, "o = open(f, 'r+b'); p = OggPage(o); h = p.packets[0]\n"
              "p.packets = [h[:16] + struct.pack('<h', -1541) + h[18:]]; o.seek(0); o.write(p.write())");
    EXPECT_NEAR(loudest() / before, 0.5F, 0.01F);
}

} // namespace
