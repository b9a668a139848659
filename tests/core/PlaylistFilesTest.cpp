#include "core/playlist/TulPlaylistFileFactory.h"
#include "core/playlist/TulPlaylistFileM3U.h"
#include "core/playlist/TulPlaylistFileTUQ.h"
#include "tests/support/Media.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

std::string inScratch(const std::string& name) {
    return (support::scratch() / name).string();
}

std::unique_ptr<TulPlaylist> readText(const std::string& name, const std::string& text) {
    support::writeFile(inScratch(name), text);
    return TulPlaylistFileFactory().createPlaylistFile(name)->read(inScratch(name));
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
        {"#EXTINF:4294967295,T\na\n#EXTINF:99999999999999999999999,T\na", "./a|T|||-1\n./a|T|||-1\n"},
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
    EXPECT_EQ(readText("long.m3u", "#EXTINF:1," + std::string(5'000'000, 'x') + "\na")->entryCount(), 1);
    EXPECT_EQ(TulPlaylistFileM3U().read("/nowhere/Party.m3u")->name, "Party");
}

TEST(TUQ, ReadsWhatTheFileSaysAndRejectsWhatBreaksTheRules) {
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
             {"source":"/b.c","artist":"","album":"B","length":-3},
             {"source":"h://x","smart":null}, {"smart":false}]})",
         "./a|T|R|S|215\n/b.c|||B|-3\n"},
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
        {R"({"name":"","entries":[{"source":"a","length":NaN}]})", rejected},
        {R"({"name":"","entries":[{"source":"a","length":1e999}]})", rejected},
        {R"({"name":"","entries":[{"source":"a"}],"artist":1})", rejected},
        {R"({"name":"","entries":[],"start":0.5})", rejected},
        {R"({"name":"","entries":[],"start":3000000000})", rejected},
        {R"({"name":"","entries":[],"x":)" + nested + std::string(1'000'000, ']') + "}", rejected},
        {garbage, rejected},
    };
    for (const auto& [text, expected] : cases) {
        const auto playlist = readText("t.tuq", text);
        EXPECT_EQ(playlist ? summary(*playlist) : rejected, expected) << text.substr(0, 200);
    }
    EXPECT_EQ(TulPlaylistFileTUQ().read("/nowhere.tuq"), nullptr);
    EXPECT_EQ(TulPlaylistFileTUQ().read("/"), nullptr);
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
                                 item + "215}," + item + "2147483647}," + item + "-2147483648}," + item +
                                 "0}]}";
    TulPlaylistFileTUQ().write(playlist, inScratch("w.tuq"));
    EXPECT_EQ(support::readFile(inScratch("w.tuq")), expected);

    const auto again = TulPlaylistFileTUQ().read(inScratch("w.tuq"));
    ASSERT_TRUE(again);
    TulPlaylistFileTUQ().write(*again, inScratch("w2.tuq"));
    EXPECT_EQ(support::readFile(inScratch("w2.tuq")), expected);

    TulPlaylistFileM3U().write(playlist, inScratch("w.m3u"));
    EXPECT_FALSE(std::filesystem::exists(inScratch("w.m3u")));
}

} // namespace
