#include "app/search/EntryFilter.h"
#include "app/search/FoldedText.h"

#include <gtest/gtest.h>

#include <random>

namespace {

std::unique_ptr<TulPlaylistEntry> makeEntry(const std::string& title) {
    auto entry = std::make_unique<TulPlaylistEntry>();
    entry->title = title;
    return entry;
}

bool finds(const std::string& words, const TulPlaylist& list) {
    app::EntryFilter filter;
    filter.setWords(app::foldedWords(QString::fromStdString(words)));
    filter.lookOn(list);
    return filter.matches(list, 0);
}

TEST(EntryFilter, FindsWordsInAnyOrderWithoutCaseAndAccents) {
    const struct {
        const char* title;
        std::vector<std::string> found;
        std::vector<std::string> notFound;
    } cases[] = {
        {"Weather Systems", {"", "systems WEATHER", " eather \t s "}, {"weathers", "systems nord"}},
        {"Café Été", {"cafe ete", "CAFÉ", "cafe\u0301"}, {"cafee", "café eté x"}},
        {"CAFE\u0301", {"café", "cafe"}, {"cafd"}}, // decomposed in the tag
        {"Straße", {"strasse", "straße", "STRAẞE"}, {"strase"}},
        {"Røyksopp, Łódź, Ænima", {"royksopp", "RØYK", "lodz", "aenima", "Æ"}, {"ryksopp"}},
        {"The ﬁnal ﬂight № 7", {"final", "flight", "no"}, {"inal x"}},
        {"Don’t – Stop…", {"don't", "don’t", "- stop..."}, {"dont"}},
        {"İstanbul ILIK ılık", {"istanbul", "ilik"}, {"stanbull"}},
        {"Ночной Поезд Ёлка", {"поезд НОЧНОЙ", "елка"}, {"nochnoy"}},
        {"ΟΔΥΣΣΕΎΣ", {"οδυσσευς", "οδυσσεύσ"}, {"οδυσσεη"}},
        {"がんばれ", {"がん", "か\u3099ん"}, {"かん"}}, // another syllable, no accent
        {"한국", {"한국", "하"}, {"항"}},
        {"ﾃｽﾄ ＡＢＣ", {"テスト", "abc"}, {"トテ"}},
        {"𝒜lice 😀 so\u00adft", {"alice", "😀", "soft"}, {"😁"}},
        {"Caf\xe9 \xff\xfe", {"cafe", "café", "ÿ"}, {"\ufffd"}}, // no UTF-8
    };
    for (const auto& [title, found, notFound] : cases) {
        TulPlaylist list;
        list.appendEntry(makeEntry(title));
        for (const auto& words : found)
            EXPECT_TRUE(finds(words, list)) << words << " in " << title;
        for (const auto& words : notFound)
            EXPECT_FALSE(finds(words, list)) << words << " in " << title;
    }
}

TEST(EntryFilter, LooksIntoEachTextAndTheNameOfTheFile) {
    TulPlaylist list;
    list.appendEntry(makeEntry("Title"));
    TulPlaylistEntry& entry = *list.entries[0];
    entry.artist = "Artist";
    entry.album = "Album";
    entry.source = "/folder/Name\xe9.flac";
    EXPECT_TRUE(finds("name title album artist .fla", list));
    for (const char* words : {"folder", "titleartist", "albumname"})
        EXPECT_FALSE(finds(words, list)) << words;
    entry.source = "http://radio.example/live";
    EXPECT_TRUE(finds("radio.exam title", list));
}

TEST(EntryFilter, FollowsTheListAndTheTypingAsIfItLookedAnew) {
    std::mt19937 random(7); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same each time
    const auto any = [&](std::size_t count) { return static_cast<std::int32_t>(random() % count); };
    const auto title = [&] { return std::string(1, "ab"[any(2)]) + std::string(1, "xy"[any(2)]); };
    TulPlaylist list;
    for (int i = 0; i < 20; ++i)
        list.appendEntry(makeEntry(title()));
    app::EntryFilter filter;
    for (int step = 0; step < 3000; ++step) {
        const std::int32_t row = any(list.entries.size());
        switch (any(7)) {
        case 0:
            list.appendEntry(makeEntry(title()));
            break;
        case 1:
            if (list.entryCount() > 5) list.entries.erase(list.entries.begin() + row);
            break;
        case 2:
            list.moveEntries(row, any(list.entries.size()));
            break;
        case 3:
            list.entryAt(row)->title = title();
            filter.updateRow(list, row);
            break;
        default:
            const char* const typed[] = {"", "a", "ax", "a x", "y", "b y", "x", "q"};
            filter.setWords(app::foldedWords(QString::fromLatin1(typed[any(std::size(typed))])));
        }
        app::EntryFilter anew;
        anew.setWords(filter.words());
        anew.lookOn(list);
        if (any(2) == 0) filter.lookOn(list);
        std::size_t count = 0;
        for (std::int32_t i = 0; i < list.entryCount(); ++i) {
            const bool matches = filter.matches(list, i);
            ASSERT_EQ(matches, filter.hasSeen(i) && anew.matches(list, i)) << step << " row " << i;
            count += matches ? 1 : 0;
        }
        ASSERT_EQ(filter.count(list), count) << step;
    }
}

TEST(RangesOfWords, AreThoseOfTheTextAsItIsShown) {
    const struct {
        const char* words;
        const char* text;
        const char* marked; ///< In brackets.
    } cases[] = {
        {"nord qu", "Nord Quartet", "[Nord] [Qu]artet"},
        {"e", "Été, cafe\u0301!", "[É]t[é], caf[e\u0301]!"},
        {"ss", "Straße, Wasser", "Stra[ß]e, Wa[ss]er"},
        {"ﬁ", "Fine ﬁ", "[Fi]ne [ﬁ]"},
        {"lic", "𝒜𝓁𝒾𝒸e", "𝒜[𝓁𝒾𝒸]e"},
        {"z", "", ""},
    };
    for (const auto& [words, text, marked] : cases) {
        QString shown = QString::fromUtf8(text);
        auto ranges = app::rangesOfWords(app::foldedWords(QString::fromUtf8(words)), shown);
        std::ranges::sort(ranges, std::greater(), &TextRange::start);
        for (const auto& [start, length] : ranges)
            shown.insert(start + length, u']').insert(start, u'[');
        EXPECT_EQ(shown.toStdString(), marked);
    }
}

} // namespace
