#include "core/playlist/TulPlaylistFileFactory.h"
#include "core/playlist/TulPlaylistFileM3U.h"
#include "core/playlist/TulPlaylistFileTUQ.h"
#include "tests/support/Media.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

/// Simulates a failing disk: reads of this file fail after a number of successful ones.
struct FailingRead {
    std::string path;
    int after = 0;
} failingRead;

bool readFails(int fd) {
    if (failingRead.path.empty()) return false;
    char path[PATH_MAX + 1] = {};
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    if (::readlink(link.c_str(), path, PATH_MAX) < 0 || failingRead.path != path) return false;
    return failingRead.after-- <= 0;
}

} // namespace

/// Overrides the C library's function.
extern "C" ssize_t read(int fd, void* bytes, size_t count) {
    if (!readFails(fd)) return ::syscall(SYS_read, fd, bytes, count);
    errno = EIO;
    return -1;
}

namespace {

std::string inScratch(const std::string& name) {
    return (support::scratch() / name).string();
}

/// Of what was read last.
FileStatus status{};

std::unique_ptr<TulPlaylist> readPath(const std::string& path) {
    return TulPlaylistFileFactory().createPlaylistFile(path)->read(path, status);
}

std::unique_ptr<TulPlaylist> readText(const std::string& name, const std::string& text) {
    support::writeFile(inScratch(name), text);
    return readPath(inScratch(name));
}

/// "source|title|artist|album|length" a line, sources without the folder.
std::string summary(const TulPlaylist& playlist) {
    const std::string folder = inScratch("");
    std::string lines;
    for (const auto& e : playlist.entries) {
        const bool below = e->source.starts_with(folder);
        lines += (below ? "./" + e->source.substr(folder.size()) : e->source) + "|" + e->title + "|" +
                 e->artist + "|" + e->album + "|" + std::to_string(static_cast<int>(e->length)) + "\n";
    }
    return lines;
}

TEST(PlaylistFileFactory, ChoosesByTheExactExtension) {
    for (const char* path : {"a.m3u", "/x/a.tuv", "a.tuq.m3u", ".m3u"})
        EXPECT_TRUE(
            dynamic_cast<TulPlaylistFileM3U*>(TulPlaylistFileFactory().createPlaylistFile(path).get()))
            << path;
    for (const char* path :
         {"a.tuq", "a.M3U", "a.m3u8", "a.tup", "a.", "a", "/music/a.b/list", "", "/x.m3u/a"})
        EXPECT_TRUE(
            dynamic_cast<TulPlaylistFileTUQ*>(TulPlaylistFileFactory().createPlaylistFile(path).get()))
            << path;
}

TEST(M3U, ReadsLinesAsTheyAre) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"\n", "./||||0\n"},
        {"a.mp3\nb.mp3", "./a.mp3||||0\n./b.mp3||||0\n"},
        {"#EXTM3U8 x\n#EXTINF:215,A - B, C\na.mp3\nb.mp3\n", "./a.mp3|A - B, C|||215\n./b.mp3||||0\n"},
        {"http://h/x.ogg", "http://h/x.ogg|x|||0\n"}, // needs no file
        {"#EXTINF:1,One\n#EXTINF:2,Two\n#EXTINF:-1,No\nhttp://h/x.ogg", "http://h/x.ogg|Two|||2\n"},
        {"#EXTINF:010,T\na\n#EXTINF:08,T\na", "./a|T|||8\n./a|T|||0\n"},
        {"#EXTINF:4294967295,T\na\n#EXTINF:99999999999999999999999,T\na", "./a|T|||0\n./a|T|||0\n"},
        {"\xef\xbb\xbf#EXTM3U\na.mp3", "./a.mp3||||0\n"},
        {std::string(2'000'000, 'x') + "\n#EXTINF:1,T" + std::string(65'500, 'x') + "\na",
         "./a|T" + std::string(65'500, 'x') + "|||1\n"}, // across blocks; the long line is left out
        {"#EXTINF:5,\na\n#EXTINF:,T\na\n#EXTINF:1.5,T\na\n#EXTINF:5\na\n#EXTINF:",
         "./a||||0\n./a||||0\n./a||||0\n./a||||0\n"},
        {"#EXTINF:5,T\r\na.mp3\r\n", "./a.mp3\r||||0\n"},
        {"#EXTGRP:Rock\n\\x\\y", "./#EXTGRP:Rock||||0\n\\x\\y||||0\n"},
        {"\xff\xfe.mp3", "./\xff\xfe.mp3||||0\n"},
    };
    for (const auto& [text, expected] : cases) {
        const auto playlist = readText("a.b.m3u", text);
        EXPECT_EQ(playlist->name, "a.b");
        EXPECT_EQ(summary(*playlist), expected) << text;
    }
}

TEST(M3U, KeepsTheLinesBeforeAnErrorAndOpensNothingWithoutAny) {
    failingRead = {.path = inScratch("broken.m3u"), .after = 1};
    std::string text;
    for (int i = 0; i < 10'000; ++i)
        text += "/music/" + std::to_string(i) + ".mp3\n";
    const auto playlist = readText("broken.m3u", text);
    ASSERT_TRUE(playlist);
    EXPECT_EQ(status, FileStatus::incomplete);
    EXPECT_GT(playlist->entryCount(), 1000);
    for (std::size_t i = 0; i < playlist->entries.size(); ++i)
        ASSERT_EQ(playlist->entries[i]->source, "/music/" + std::to_string(i) + ".mp3");
    failingRead.after = 0;
    EXPECT_FALSE(readPath(failingRead.path));
    EXPECT_EQ(status, FileStatus::failed);

    const std::pair<std::string, FileStatus> nothing[] = {
        {"/nowhere/Party.m3u", FileStatus::notFound},
        {"/nowhere.tuq", FileStatus::notFound},
        {"/", FileStatus::notAllowed},
        {"/dev/zero", FileStatus::notAllowed},
    };
    for (const auto& [path, expected] : nothing) {
        EXPECT_FALSE(readPath(path)) << path;
        EXPECT_EQ(status, expected) << path;
    }
}

TEST(PlaylistFileFactory, ReadsOtherTextAsM3U) {
    const std::string rejected = "rejected";
    const std::pair<std::string, std::string> cases[] = {
        {"a.m3u8", "\xef\xbb\xbf#EXTM3U\n#EXTINF:5,\xc3\xa4\na.mp3"},
        {"a.M3U", "#EXTM3U\n#EXTINF:5,\xc3\xa4\na.mp3"},
        {"a", "#EXTINF:5,\xc3\xa4\na.mp3\n"},
        {"picture.m3u8", "\x89PNG\r\n\x1a\n"},
        {"zeros.m3u8", std::string(100, '\0')},
        {"list.m3u8", R"({"name":"")"},
        {"array.m3u8", "\xef\xbb\xbf [1]"},
        {"empty.m3u8", " \r\n"},
    };
    for (const auto& [name, text] : cases) {
        const auto playlist = readText(name, text);
        EXPECT_EQ(playlist ? summary(*playlist) : rejected,
                  text.find("EXTINF") == std::string::npos ? rejected : "./a.mp3|\xc3\xa4|||5\n")
            << name;
        EXPECT_EQ(status, playlist ? FileStatus::done : FileStatus::malformed) << name;
    }
}

TEST(TUQ, ReadsValidFilesAndRejectsInvalidOnes) {
    const std::string rejected = "rejected";
    const std::string nested(1'000'000, '[');
    std::string garbage;
    garbage.resize(100'000'000, '\xa5');
    const std::pair<std::string, std::string> cases[] = {
        {R"({"name":"","entries":[]})", ""},
        {"\xef\xbb\xbf"
         R"( {"name":"","entries":[{"source":"a.mp3"}]} )",
         "./a.mp3||||0\n"},
        {R"({"name":"","artist":"R","album":"S","entries":[
             {"source":"a","title":"T","length":215.9},
             {"source":"/b.c","artist":"","album":"B","length":-3,"x":{"source":[{"entries":0}]}},
             {"source":"h://x","smart":null}, {"smart":false}]})",
         "./a|T|R|S|215\n/b.c|||B|0\n"},
        {R"({"entries":[{"source":"a","artist":""},{"source":"b"}],"entries":7,"artist":"R","album":"S","name":""})",
         "./a|||S|0\n./b||R|S|0\n"}, // the root's members come last
        {R"({"name":"","entries":[{"source":"a","length":NaN},{"source":"a","length":1e999},)"
         R"({"source":"a","length":-Infinity},{"source":"a","length":1e12},{"source":"a","length":12e-1}]})",
         "./a||||0\n./a||||0\n./a||||0\n./a||||0\n./a||||1\n"},
        {R"({"name":"","entries":[{"source":"a\ud800b\udc00c\ud83d\ude00\ud800\ud83d\ude00\ud800\n\\ud800"}]})",
         "./a\xef\xbf\xbd"
         "b\xef\xbf\xbd"
         "c\xf0\x9f\x98\x80\xef\xbf\xbd\xf0\x9f\x98\x80\xef\xbf\xbd\n\\ud800||||0\n"},
        {R"({"name":"","name":7,"entries":[{"source":"\u00e4\u0000x","source":1}],"other":{}})",
         "./ä||||0\n"},
        {R"({"name":"","entries":[],"x":)" + std::string(900, '[') + std::string(900, ']') + "}", ""},
        {R"({"name":"\\","entries":[],"x":"\"\\\")" + std::string(5000, '[') + R"("})",
         ""}, // brackets in a string
        {R"({"name":"\\","entries":[],"x":)" + std::string(1100, '[') + std::string(1100, ']') + "}",
         rejected},
        {"", rejected},
        {"[]", rejected},
        {R"({"name":"","entries":[]} x)", rejected},
        {R"({"entries":[]})", rejected},
        {R"({"name":7,"entries":[]})", rejected},
        {R"({"name":"","entries":{}})", rejected},
        {R"({"name":"","entries":[{"title":"T"}]})", rejected},
        {R"({"name":"","entries":[{"source":"a","title":null}]})", rejected},
        {R"({"name":"","entries":[{"source":"a","length":"1"}]})", rejected},
        {R"({"name":"","entries":[{"source":"a","length":1e}]})", rejected},
        {R"({"name":"","entries":[{"source":"\ud8"}]})", rejected},
        {R"({"name":"","entries":[7]})", rejected},
        {std::string(R"({"name":"","entries":[]})") + '\0' + "x", rejected},
        {R"({"name":"","entries":[],"artist":1})", rejected},
        {R"({"name":"","entries":[],"album":{}})", rejected},
        {R"({"name":"","entries":[],"start":0.5})", rejected},
        {R"({"name":"","entries":[],"start":3000000000})", rejected},
        {R"({"name":"","entries":[],"x":)" + nested + std::string(1'000'000, ']') + "}", rejected},
        {garbage, rejected},
    };
    for (const auto& [text, expected] : cases) {
        const auto playlist = readText("t.tuq", text);
        EXPECT_EQ(playlist ? summary(*playlist) : rejected, expected) << text.substr(0, 200);
    }
}

TEST(TUQ, StartSelectsAnEntryWithinTheList) {
    const std::pair<int, int> cases[] = {{0, 0}, {1, 1}, {2, -1}, {-1, -1}};
    for (const auto& [start, active] : cases) {
        const auto playlist =
            readText("t.tuq", R"({"start":)" + std::to_string(start) +
                                  R"(,"name":"","entries":[{"source":"a"},{"source":"b"}]})");
        EXPECT_EQ(playlist->currentIndex, std::max(active, 0));
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(playlist->entryAt(i)->active, i == active) << start;
    }
}

TEST(TUQ, WritesTheSameTextAgain) {
    TulPlaylist playlist;
    playlist.name = "N\"\\\x01\x1f\n/\xe4\xc3\xa4"; // bytes that are no UTF-8 stay
    for (const double length : {215.9, 1e300, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
        auto entry = std::make_unique<TulPlaylistEntry>();
        entry->source = "/\xff";
        entry->title = entry->artist = entry->album = "x";
        entry->length = length;
        playlist.appendEntry(std::move(entry));
    }
    const std::string item =
        "{\"source\":\"/\xff\",\"title\":\"x\",\"artist\":\"x\",\"album\":\"x\",\"length\":";
    const std::string expected = "{\"name\":\"N\\\"\\\\\\u0001\\u001F\\n/\xe4\xc3\xa4\",\"entries\":[" +
                                 item + "215}," + item + "0}," + item + "0}," + item + "0}]}";
    EXPECT_EQ(TulPlaylistFileTUQ().write(playlist, inScratch("w.tuq")), FileStatus::done);
    EXPECT_EQ(support::readFile(inScratch("w.tuq")), expected);

    const auto again = readPath(inScratch("w.tuq"));
    ASSERT_TRUE(again);
    TulPlaylistFileTUQ().write(*again, inScratch("w2.tuq"));
    EXPECT_EQ(support::readFile(inScratch("w2.tuq")), expected);

    TulPlaylistFileM3U().write(playlist, inScratch("w.m3u"));
    EXPECT_FALSE(std::filesystem::exists(inScratch("w.m3u")));
}

/// A large file (TUL_HOSTILE_MEGABYTES), made of `part` between `head` and `tail`.
std::string writeLarge(const std::string& name, const std::string& head, const std::string& part,
                       const std::string& tail) {
    std::string text = head;
    const char* megabytes = std::getenv("TUL_HOSTILE_MEGABYTES");
    const std::size_t size = static_cast<std::size_t>(megabytes ? std::atoi(megabytes) : 20) << 20;
    text.reserve(size + part.size());
    while (text.size() < size)
        text += part;
    text += tail;
    support::writeFile(inScratch(name), text);
    return inScratch(name);
}

struct Hostile {
    std::string name, head, part, tail;
    FileStatus expected;
};

TEST(PlaylistFiles, TakeLittleMemoryWhateverTheyHold) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "one thread, whose memory is the sanitizer's, and minutes of it";
#endif
    const std::string list = R"({"name":"","entries":[)";
    const Hostile cases[] = {
        {"entries.tuq", list, R"({"source":""},)", R"({"source":""}]})", FileStatus::cut},
        {"texts.tuq", list, R"({"source":")" + std::string(5000, 'x') + R"("},)", R"({"source":""}]})",
         FileStatus::done},
        {"string.tuq", R"({"name":")", std::string(1000, 'x'), R"(","entries":[]})", FileStatus::malformed},
        {"number.tuq", R"({"name":"","entries":[],"x":)", std::string(1000, '1'), "}", FileStatus::malformed},
        {"members.tuq", list + "{", R"("x":"y",)", R"("source":""}]})", FileStatus::done},
        {"values.tuq", R"({"name":"","entries":[],"x":[)", "[],[{}],", "1]}", FileStatus::done},
        {"lines.m3u", "", "\n", "", FileStatus::cut},
        {"line.m3u", "", std::string(1000, 'x'), "", FileStatus::cut},
        {"titles.m3u", "", "#EXTINF:1," + std::string(3000, 'x') + "\na\n", "", FileStatus::done},
    };
    for (const Hostile& each : cases) {
        const std::string path = writeLarge(each.name, each.head, each.part, each.tail);
        const pid_t child = fork();
        if (child == 0) {
            const auto playlist = readPath(path);
            const bool hasList = status == FileStatus::done || status == FileStatus::cut;
            _exit(status == each.expected && (playlist != nullptr) == hasList ? 0 : 1);
        }
        int ended = 0;
        struct rusage used {};
        ASSERT_EQ(wait4(child, &ended, 0, &used), child);
        EXPECT_EQ(ended, 0) << each.name;
        // The sanitizers keep what was freed.
        EXPECT_TRUE(isSanitized || used.ru_maxrss < 256 * 1024) << each.name << " " << used.ru_maxrss;
        std::filesystem::remove(path);
    }
}

} // namespace
