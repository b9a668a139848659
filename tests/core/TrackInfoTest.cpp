#include "core/playlist/FileDetails.h"
#include "core/playlist/TulPlaylist.h"
#include "tests/support/Media.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

/// Encodes two seconds of sine in every format, tagged by another library than the one that reads.
const fs::path& media() {
    static const fs::path folder = [] {
        for (const char* name : {"a.mp3", "a.flac", "a.ogg", "a.opus", "a.wv", "a.m4a"})
            support::encode(name, support::sine(440, 88200));
        support::run({"/usr/bin/python3", "-c", R"(
import mutagen, os, shutil, sys
from mutagen.apev2 import APEv2, APEValue, BINARY
from mutagen.flac import FLAC, Picture
from mutagen.id3 import ID3, APIC, TXXX
from mutagen.mp4 import MP4, MP4Cover, MP4FreeForm
os.chdir(sys.argv[1])
for name in ('a.mp3', 'a.flac', 'a.ogg', 'a.opus', 'a.wv', 'a.m4a'):
    shutil.copy(name, 'bare-' + name)
    audio = mutagen.File(name, easy=True)
    if audio.tags is None: audio.add_tags()
    audio['title'], audio['artist'], audio['album'] = 'Lied \u2665', 'Bänd', 'Platte'
    audio.save()
def copy(source, name):
    shutil.copy(source, name)
    return name
def apic(name, *pictures):
    tags = ID3()
    for i, data in enumerate(pictures):
        tags.add(APIC(encoding=3, mime='image/png', type=4 if i == 0 else 3, desc=str(i), data=data))
    tags.save(name)
def ape(name, value):
    tags = APEv2()
    tags['Cover Art (Front)'] = APEValue(value, BINARY)
    tags.save(name)
apic(copy('bare-a.mp3', 'back-first.mp3'), b'BACK', b'FRONT')
apic(copy('bare-a.mp3', 'empty-apic.mp3'), b'')
ape('empty-apic.mp3', b'cover.jpg\0APE\0PICTURE')
ape(copy('bare-a.mp3', 'no-zero.mp3'), b'cover.jpg')
ape(copy('bare-a.mp3', 'nothing-after.mp3'), b'cover.jpg\0')
open('monkeys.ape', 'wb').write(b'MAC \x96\x0f' + bytes(200))
ape('monkeys.ape', b'\0MONKEY')
ape(copy('bare-a.wv', 'cover.wv'), b'cover.jpg\0WAVPACK')
def flac(name, *pictures):
    audio = FLAC(copy('bare-a.flac', name))
    for data in pictures:
        picture = Picture()
        picture.data, picture.mime = data, 'image/png'
        audio.add_picture(picture)
    audio.save()
flac('picture.flac', b'FLAC', b'SECOND')
flac('empty-picture.flac', b'', b'SECOND')
flac('empty-and-id3.flac', b'', b'SECOND')
apic('empty-and-id3.flac', b'ID3')
mp4 = MP4(copy('bare-a.m4a', 'two.m4a'))
mp4['covr'] = [MP4Cover(b'FIRST', MP4Cover.FORMAT_PNG), MP4Cover(b'SECOND', MP4Cover.FORMAT_JPEG)]
mp4.save()
gains = ('-7.25 dB', '+2 dB')
keys = ('replaygain_track_gain', 'REPLAYGAIN_ALBUM_GAIN')
for name in ('gain.mp3', 'gain.flac', 'gain.m4a', 'gain.opus'):
    audio = mutagen.File(copy('a.' + name[5:], name))
    for key, gain in zip(keys, gains):
        if name == 'gain.mp3': audio.tags.add(TXXX(encoding=3, desc=key, text=gain))
        elif name == 'gain.m4a': audio['----:com.apple.iTunes:' + key] = MP4FreeForm(gain.encode())
        elif name == 'gain.flac': audio[key] = gain
    if name == 'gain.opus': audio['R128_TRACK_GAIN'], audio['R128_ALBUM_GAIN'] = '-3136', '-768'
    audio.save()
audio = mutagen.File(copy('a.flac', 'artist-only.flac')); del audio['album']; audio.save()
audio = mutagen.File(copy('a.flac', 'album-only.flac')); del audio['artist']; audio.save()
)",
                      support::scratch().string()});
        return support::scratch();
    }();
    return folder;
}

std::string summary(const TulPlaylistEntry& entry) {
    return entry.title + "|" + entry.artistAlbum + "|" + entry.artist + "|" + entry.album + "|" +
           std::to_string(static_cast<int>(entry.length));
}

TEST(TrackInfo, ComesFromTheTagsOfEveryFormatOrFromTheName) {
    for (const char* name : {"a.mp3", "a.flac", "a.ogg", "a.opus", "a.wv", "a.m4a"})
        EXPECT_EQ(summary(TulPlaylistEntry((media() / name).string())), "Lied ♥|Bänd - Platte|Bänd|Platte|2")
            << name;
    const std::pair<std::string, std::string> cases[] = {
        {"bare-a.mp3", "bare-a||||2"},
        {"artist-only.flac", "Lied ♥|Bänd|Bänd||2"},
        {"album-only.flac", "Lied ♥| - Platte||Platte|2"},
        {"gone.part.flac", "gone.part||||0"},
        {"track", "track||||0"},
        {".hidden", "||||0"},
        {"", "||||0"}, // the folder itself
    };
    for (const auto& [name, expected] : cases)
        EXPECT_EQ(summary(TulPlaylistEntry((media() / name).string())), expected) << name;
    EXPECT_EQ(summary(TulPlaylistEntry("http://host/radio.low.ogg")), "radio.low||||0");
    EXPECT_EQ(summary(TulPlaylistEntry("http://host/")), "||||0");

    // Opening a pipe for its tags would wait for ever.
    ASSERT_EQ(mkfifo((media() / "pipe.mp3").c_str(), 0600), 0);
    EXPECT_EQ(summary(TulPlaylistEntry((media() / "pipe.mp3").string())), "pipe||||0");
    // An address that happens to be a path as well is still an address.
    fs::create_directories(media() / "x:");
    fs::copy_file(media() / "a.flac", media() / "x:" / "a.flac");
    EXPECT_EQ(summary(TulPlaylistEntry((media() / "x:").string() + "//a.flac")), "a||||0");
}

TEST(TrackInfo, FillsOnlyWhatIsMissing) {
    TulPlaylistEntry entry;
    entry.source = (media() / "a.flac").string();
    entry.title = "X";
    entry.length = 100;
    entry.readTrackInfo(true);
    EXPECT_EQ(summary(entry), "X|Bänd - Platte|Bänd|Platte|100");
    entry.length = -1;
    entry.readTrackInfo(true);
    EXPECT_EQ(entry.length, 2.0);
    entry.readTrackInfo(false);
    EXPECT_EQ(entry.title, "Lied ♥");
}

std::string tagFrame(const std::string& kind, const std::string& data, const std::string& flags = {0, 0}) {
    std::string size;
    for (int shift = 21; shift >= 0; shift -= 7)
        size += static_cast<char>(data.size() >> shift & 0x7f);
    return kind + size + flags + data;
}

/// A sound with these frames before it.
std::string tagged(const std::string& name, const std::string& frames) {
    const std::string tag = tagFrame("ID3\x04", frames, {}).erase(4, 0).insert(4, 2, '\0');
    support::writeFile(media() / name, tag + support::readFile(media() / "bare-a.mp3"));
    return (media() / name).string();
}

/// The file of that name, with "\u2665" in its tags replaced by three other bytes.
std::string withoutHeart(const std::string& name, const std::string& bytes) {
    std::string content = support::readFile(media() / name);
    for (auto at = content.find("\u2665"); at != content.npos; at = content.find("\u2665", at))
        content.replace(at, bytes.size(), bytes);
    support::writeFile(media() / ("heartless-" + name), content);
    return (media() / ("heartless-" + name)).string();
}

TEST(TrackInfo, AnInvalidCharacterLosesNoOthers) {
    const std::string halves("\x01\xff\xfeL\0\x00\xd8i\0\x00\xdc\x3d\xd8\x00\xdex\0\x01\xd8", 19);
    const std::pair<std::string, std::string> cases[] = {
        {tagged("utf16.mp3", tagFrame("TIT2", halves)), "L\ufffdi\ufffd\U0001f600x\ufffd"},
        {tagged("utf8.mp3", tagFrame("TIT2", "\3L\xed\xa0\x80ied")), "L\ufffdied"},
        {tagged("whole.mp3", tagFrame("TIT2", std::string("\1\xff\xfe\x3d\xd8\x00\xde", 7))), "\U0001f600"},
        {withoutHeart("a.flac", "\xed\xb0\x80"), "Lied \ufffd"},
        {withoutHeart("a.ogg", "\xed\xa0\x80"), "Lied \ufffd"},
        {withoutHeart("a.opus", "\xed\xbf\xbf"), "Lied \ufffd"},
        {withoutHeart("a.m4a", "\xed\xaf\xbf"), "Lied \ufffd"},
        {withoutHeart("a.wv", "\xed\xb0\x80"), "Lied \ufffd"},
        {withoutHeart("artist-only.flac", "\xed\x9f\xbf"), "Lied \xed\x9f\xbf"}, // just below them
    };
    for (const auto& [path, title] : cases)
        EXPECT_EQ(TulPlaylistEntry(path).title, title) << path;
}

TEST(TrackInfo, WhatOnlyLooksHostileIsRead) {
    const std::string title = tagFrame("TIT2", "\3Lied");
    const std::string lyrics = tagFrame("USLT", "\3deu" + std::string(1, '\0') + "CHAP\nYOU");
    const std::string chapter = tagFrame("CHAP", std::string("a\0", 2) + std::string(16, '\0') + title);
    // "\3Lied" as deflate stores it.
    const std::string packed("\0\0\0\5\x78\x01\x01\x05\x00\xfa\xff\3Lied\x03\xad\x01\x82", 20);
    const std::string picture = std::string("\0image/png\0\3\0", 13);
    constexpr std::size_t megabyte = 1 << 20;
    const struct {
        const char* name;
        std::string frames;
        std::size_t picture;
    } cases[] = {
        {"lyrics.mp3", lyrics + title, 0},
        {"chapters.mp3", chapter + chapter + title, 0},
        {"packed.mp3", tagFrame("TIT2", packed, {0, 9}), 0},
        {"large.mp3", title + tagFrame("APIC", picture + std::string(32 * megabyte, 'x')), 32 * megabyte},
        {"too-large.mp3", title + tagFrame("APIC", picture + std::string(33 * megabyte, 'x')), 0},
    };
    for (const auto& [name, frames, size] : cases) {
        TulPlaylistEntry entry(tagged(name, frames));
        EXPECT_EQ(entry.title, "Lied") << name;
        entry.loadCoverArt();
        EXPECT_EQ(static_cast<std::size_t>(entry.coverArtSize), size) << name;
    }
}

TEST(FileDetails, ContainThePropertiesOfEachFormat) {
    const struct {
        const char* file;
        const char* format;
        int rate, channels, bits;
    } cases[] = {
        {"a.flac", "FLAC", 44100, 2, 16},     {"a.mp3", "MP3", 44100, 2, 0},
        {"a.ogg", "Ogg Vorbis", 44100, 2, 0}, {"a.opus", "Opus", 48000, 2, 0},
        {"a.wv", "WavPack", 44100, 2, 16},    {"a.m4a", "AAC", 44100, 2, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const auto details = readFileDetails((media() / c.file).string());
        ASSERT_TRUE(details);
        EXPECT_EQ(details->format, c.format);
        EXPECT_EQ(details->sampleRate, c.rate);
        EXPECT_EQ(details->channels, c.channels);
        EXPECT_EQ(details->bitsPerSample, c.bits);
        EXPECT_NEAR(details->length, 2, 0.1);
        EXPECT_GT(details->bitRate, 0);
        EXPECT_EQ(details->size, fs::file_size(media() / c.file));
        ASSERT_EQ(details->tags.size(), 3U);
        EXPECT_EQ(details->tags[0], (std::pair<std::string, std::string>("Title", "Lied ♥")));
    }
    const auto text = [](const std::optional<float>& gain) { return gain ? std::to_string(*gain) : "none"; };
    for (const char* file : {"gain.mp3", "gain.flac", "gain.m4a", "gain.opus", "a.flac"}) {
        const auto details = readFileDetails((media() / file).string());
        ASSERT_TRUE(details) << file;
        const bool isTagged = std::string_view(file).starts_with("gain");
        EXPECT_EQ(text(details->trackGain), isTagged ? "-7.250000" : "none") << file;
        EXPECT_EQ(text(details->albumGain), isTagged ? "2.000000" : "none") << file;
    }
    for (const auto& nothing :
         {(media() / "gone.flac").string(), media().string(), std::string("http://h/a.mp3")})
        EXPECT_FALSE(readFileDetails(nothing)) << nothing;
}

TEST(TrackInfo, AnyNameIsAName) {
    const std::string bytes("\xff\xfe\xed\xa0\x80\n%s<b>&\\", 13);
    const std::string names[] = {bytes + ".flac",
                                 std::string(255, 'x'),
                                 std::string(250, '\xff') + ".flac",
                                 "-rf",
                                 "..",
                                 "a\tb.flac",
                                 std::string(5000, 'y') + ".flac",
                                 std::string("a\0b.flac", 8),
                                 std::string(3000, '/')};
    for (const std::string& name : names) {
        const std::string path = (media() / "").string() + name;
        std::error_code isNoName;
        fs::copy_file(media() / "a.flac", path, isNoName);
        TulPlaylistEntry entry(path);
        entry.loadCoverArt();
        EXPECT_EQ(entry.artist, isNoName ? "" : "Bänd") << name;
    }
}

TEST(CoverArt, IsTheFirstPictureOfEachFormat) {
    const std::pair<std::string, std::string> cases[] = {
        {"back-first.mp3", "BACK"},
        {"empty-apic.mp3", std::string("APE\0PICTURE", 11)},
        {"bare-a.mp3", ""},
        {"no-zero.mp3", ""},
        {"nothing-after.mp3", ""},
        {"picture.flac", "FLAC"},
        {"empty-picture.flac", ""},
        {"empty-and-id3.flac", "ID3"},
        {"two.m4a", "FIRST"},
        {"bare-a.m4a", ""},
        {"monkeys.ape", "MONKEY"},
        {"cover.wv", ""},
        {"a.ogg", ""},
        {"gone.mp3", ""},
    };
    for (const auto& [name, picture] : cases) {
        TulPlaylistEntry entry;
        entry.source = (media() / name).string();
        entry.loadCoverArt();
        const auto size = static_cast<std::size_t>(entry.coverArtSize);
        EXPECT_EQ(std::string(entry.coverArt.get(), size), picture) << name;
        // Once found it stays, also when the file is gone.
        entry.source = "/nowhere.mp3";
        entry.loadCoverArt();
        EXPECT_EQ(static_cast<std::size_t>(entry.coverArtSize), picture.size()) << name;
    }
}

} // namespace
