#include "core/playlist/TulPlaylist.h"
#include "core/playlist/resolveEntrySource.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

/// Entries named by letters; a capital one is active and current.
TulPlaylist playlistOf(const std::string& letters) {
    TulPlaylist playlist;
    for (const char letter : letters) {
        auto entry = std::make_unique<TulPlaylistEntry>();
        entry->title = std::string(1, static_cast<char>(std::tolower(letter)));
        playlist.appendEntry(std::move(entry));
        if (std::isupper(letter)) playlist.selectEntry(static_cast<std::int32_t>(playlist.entryCount() - 1));
    }
    return playlist;
}

std::string lettersOf(const TulPlaylist& playlist) {
    std::string letters;
    for (const auto& entry : playlist.entries)
        letters += static_cast<char>(entry->active ? std::toupper(entry->title[0]) : entry->title[0]);
    return letters;
}

TEST(Playlist, MovesOneEntryAndTheCurrentIndexFollowsTheActiveOne) {
    const struct {
        std::string before;
        std::int32_t from, to;
        std::string after;
        std::int32_t current;
    } cases[] = {
        {"Abcd", 0, 2, "bcAd", 2},  {"aBcd", 3, 1, "adBc", 2}, // across it, upwards
        {"aBcd", 1, 3, "acdB", 3},  {"aBcd", 0, 2, "Bcad", 0}, // across it, downwards
        {"abCd", 0, 1, "baCd", 2},  {"abCd", 2, 2, "abCd", 2},
        {"abCd", 0, 4, "bCda", 1},  {"abCd", 0, 2147483647, "bCda", 1},
        {"abcd", 0, 3, "bcda", 0},  {"abCd", 4, 0, "abCd", 2},
        {"abCd", -1, 0, "abCd", 2}, {"abCd", 1, -1, "abCd", 2},
        {"", 0, 0, "", 0},          {"A", 0, 1, "A", 0},
    };
    for (const auto& c : cases) {
        TulPlaylist playlist = playlistOf(c.before);
        playlist.moveEntries(c.from, c.to);
        EXPECT_EQ(lettersOf(playlist), c.after) << c.before << " " << c.from << " -> " << c.to;
        EXPECT_EQ(playlist.currentIndex, c.current) << c.before << " " << c.from << " -> " << c.to;
    }
}

TEST(Playlist, WalksRoundAndIgnoresIndexesOutside) {
    TulPlaylist playlist = playlistOf("abC");
    EXPECT_EQ(playlist.nextEntry(), playlist.entryAt(0));
    EXPECT_EQ(lettersOf(playlist), "Abc");
    EXPECT_EQ(playlist.previousEntry(), playlist.entryAt(2));
    EXPECT_EQ(lettersOf(playlist), "abC");
    for (const int outside : {-1, 3, 2147483647}) {
        playlist.selectEntry(outside);
        EXPECT_EQ(lettersOf(playlist), "abC");
        EXPECT_THROW(static_cast<void>(playlist.entryAt(outside)), std::out_of_range);
    }

    TulPlaylist empty;
    EXPECT_EQ(empty.nextEntry(), nullptr);
    EXPECT_EQ(empty.previousEntry(), nullptr);
    EXPECT_THROW(static_cast<void>(empty.currentEntry()), std::out_of_range);
}

TEST(Playlist, ResolvesSourcesAgainstTheFolder) {
    const std::pair<std::string, std::string> cases[] = {
        {"http://host/a", "http://host/a"},   {"x://", "x://"},      {"/music/a.mp3", "/music/a.mp3"},
        {"\\music\\a.mp3", "\\music\\a.mp3"}, {"a.mp3", "/l/a.mp3"}, {"music/a.mp3", "/l/music/a.mp3"},
        {"C:\\a.mp3", "/l/C:\\a.mp3"},        {"", "/l/"},           {":/", "/l/:/"},
    };
    for (const auto& [source, resolved] : cases)
        EXPECT_EQ(resolveEntrySource(source, "/l/"), resolved);
}

} // namespace
