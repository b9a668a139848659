#include "core/playlist/TulPlaylist.h"
#include "core/playlist/resolveEntrySource.h"

#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <utility>
#include <vector>

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

TulRows rowsOf(const std::string& digits) {
    TulRows rows;
    for (const char digit : digits)
        rows.push_back(digit - '0');
    return rows;
}

TulPlaylist::Entries entriesOf(const std::string& letters) {
    return std::move(playlistOf(letters).entries);
}

TEST(Playlist, EditsManyRowsAndKeepsWhatIsCurrent) {
    using Edit = std::function<void(TulPlaylist&)>;
    const auto removing = [](const std::string& rows) {
        return [=](TulPlaylist& list) { list.removeEntries(rowsOf(rows)); };
    };
    const auto inserting = [](const std::string& rows, const std::string& letters) {
        return [=](TulPlaylist& list) { list.insertEntries(rowsOf(rows), entriesOf(letters)); };
    };
    const auto moving = [](const std::string& from, const std::string& to) {
        return [=](TulPlaylist& list) { list.moveEntries(rowsOf(from), rowsOf(to)); };
    };
    const auto ordering = [](const std::string& order) {
        return [=](TulPlaylist& list) {
            for (const std::int32_t row : list.reorderEntries(rowsOf(order)))
                EXPECT_GE(row, 0);
        };
    };
    const struct {
        std::string before;
        std::vector<Edit> edits;
        std::string after;
        std::int32_t current;
        char following; ///< What plays next.
        char preceding; ///< What "previous" selects.
    } cases[] = {
        {"abCde", {removing("04")}, "bCd", 1, 'd', 'b'},
        {"abCde", {removing("2")}, "abde", 2, 'd', 'b'}, // it plays to its end, and d follows
        {"abCde", {removing("1234")}, "a", 0, 'a', 'a'},
        {"abC", {removing("2")}, "ab", 0, 'a', 'b'}, // the last: round to the first
        {"Abc", {removing("0")}, "bc", 0, 'b', 'c'},
        {"A", {removing("0")}, "", 0, 0, 0},
        {"abc", {removing("0")}, "bc", 0, 'c', 'c'}, // nothing has been started
        {"aB", {removing("")}, "aB", 1, 'a', 'a'},
        {"aBc", {inserting("012", "Xyz")}, "xyzaBc", 4, 'c', 'a'}, // no second one is active
        {"aBc", {inserting("1", "x")}, "axBc", 2, 'c', 'x'},
        {"aBc", {inserting("24", "xy")}, "aBxcy", 1, 'x', 'a'},
        {"", {inserting("01", "xy")}, "xy", 0, 'y', 'y'},
        {"abCd", {removing("2"), inserting("2", "x")}, "abxd", 2, 'x', 'b'}, // right behind what plays
        {"abCd", {removing("2"), inserting("0", "x")}, "xabd", 3, 'd', 'b'},
        {"abC", {removing("2"), inserting("2", "x")}, "abx", 2, 'x', 'b'},
        {"abCd", {removing("2"), removing("01")}, "d", 0, 'd', 'd'},
        {"abCd", {removing("2"), [](auto& list) { list.selectEntry(0); }}, "Abd", 0, 'b', 'd'},
        {"aBcdef", {moving("35", "01")}, "dfaBce", 3, 'c', 'a'},
        {"aBcdef", {moving("134", "345")}, "acfBde", 3, 'd', 'f'},
        {"aBcd", {ordering("3210")}, "dcBa", 2, 'a', 'c'},
        {"aBcd", {ordering("10")}, "Bacd", 0, 'a', 'd'}, // what was added meanwhile stays behind
        {"aBcd", {removing("1"), ordering("210")}, "dca", 1, 'c', 'd'},
    };
    for (const auto& c : cases) {
        TulPlaylist list = playlistOf(c.before);
        for (const Edit& edit : c.edits)
            edit(list);
        SCOPED_TRACE(c.before + " -> " + c.after);
        EXPECT_EQ(lettersOf(list), c.after);
        EXPECT_EQ(list.currentIndex, c.current);
        const TulPlaylistEntry* const following = list.followingEntry();
        EXPECT_EQ(following ? following->title[0] : 0, c.following);
        const TulPlaylistEntry* const preceding = list.previousEntry();
        EXPECT_EQ(preceding ? preceding->title[0] : 0, c.preceding);
    }
}

TEST(Playlist, WrapsAroundAndIgnoresInvalidIndexes) {
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
