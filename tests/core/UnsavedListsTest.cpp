// Unsaved changes are restored after any way of leaving a list.

#include "core/player/TulPlayer.h"
#include "tests/core/RecordingBass.h"
#include "tests/support/Media.h"

#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <string>

namespace {

namespace fs = std::filesystem;
using support::readFile;
using support::writeFile;

/// All that is to come back.
std::string stateOf(const TulPlaylist& list) {
    std::string state = list.name + "|" + list.path + "|" + std::to_string(list.currentIndex);
    for (const auto& entry : list.entries)
        state += "\n" + entry->source + "|" + entry->title + "|" + entry->artist + "|" + entry->album + "|" +
                 std::to_string(entry->length) + (entry->active ? "*" : "");
    return state;
}

std::vector<std::unique_ptr<TulPlaylistEntry>> rows(std::vector<std::string> sources) {
    std::vector<std::unique_ptr<TulPlaylistEntry>> rows;
    for (std::string& source : sources) {
        rows.push_back(std::make_unique<TulPlaylistEntry>());
        rows.back()->source = std::move(source);
    }
    return rows;
}

void append(TulPlayer& player, TulPlaylist::Entries entries) {
    TulRows at(entries.size());
    std::iota(at.begin(), at.end(), static_cast<std::int32_t>(player.playlist->entryCount()));
    player.insertEntries(at, std::move(entries));
    player.endEdit();
}

void move(TulPlayer& player, std::int32_t from, std::int32_t to) {
    player.playlist->moveEntries(from, to);
    player.endEdit();
}

class UnsavedLists : public testing::Test {
protected:
    UnsavedLists() {
        recording::bass = {};
        fs::remove_all(folder);
        fs::create_directories(folder);
        writeFile(file, text);
        writeFile(other, R"({"name":"Work","entries":[{"source":"/w.mp3"}]})");
        restart();
    }

    std::unique_ptr<TulPlayer> newProgram() {
        auto program = std::make_unique<TulPlayer>();
        program->setStorePath(folder / "playlists.json");
        program->loadInternalPlaylists();
        program->setStateFolder(folder / "state");
        program->reportFile = [this](const std::string& path, FileStatus status) {
            reports += fs::path(path).filename().string() + std::to_string(static_cast<int>(status)) + " ";
        };
        return program;
    }
    void restart() {
        player.reset();
        player = newProgram();
    }
    TulPlaylist& list() { return *player->playlist; }
    static void store(TulPlayer& program) {
        EXPECT_TRUE(program.listKeeper.keep(*program.playlist, std::chrono::hours(1)));
    }
    std::string names() {
        std::string names;
        for (const UnsavedList& each : player->listKeeper.lists())
            names += (each.name.empty() ? "?" : each.name) + (each.isSeparate ? "! " : " ");
        return names;
    }
    void change(TulPlayer& program) {
        auto added = rows({"no address \xff", "/music/\"new\".mp3"});
        added[0]->length = 12.345678901;
        added[0]->artist = "A\xe9\n";
        added[0]->title = "T";
        append(program, std::move(added));
        move(program, 0, 2);
        program.playlist->selectEntry(1);
    }

    const fs::path folder = support::scratch() / "unsaved";
    const std::string file = folder / "road.tuq";
    const std::string other = folder / "work.tuq";
    const std::string text = R"({"name":"Road","entries":[{"source":"/a.mp3"},{"source":"/b.mp3"}]})";
    std::string reports;
    std::unique_ptr<TulPlayer> player;
};

TEST_F(UnsavedLists, AreRestoredAfterAnyWayOfLeaving) {
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"another opened", [&] { player->openPlaylist(other); }},
        {"another chosen",
         [&] {
             player->openPlaylist(other), player->selectInternalPlaylist(0), player->openPlaylist(other);
         }},
        {"opened again", [&] { player->openPlaylist(file); }},
        {"cleared", [&] { player->clearPlaylist(); }},
        {"quit", [&] { player->finishSaving(), restart(); }},
        {"killed", [&] { store(*player), restart(); }},
        {"killed long after", [&] { store(*player), restart(), player->clearPlaylist(), restart(); }},
        {"its file gone", [&] { player->clearPlaylist(), fs::remove(file); }},
    };
    for (const auto& [name, leave] : ways) {
        SCOPED_TRACE(name);
        fs::remove_all(folder / "state");
        writeFile(file, text);
        restart();
        player->openPlaylist(file);
        EXPECT_FALSE(list().isChanged());
        change(*player);
        player->renamePlaylist("Road trip");
        const std::string before = stateOf(list());
        leave();
        EXPECT_EQ(fs::exists(file) ? readFile(file) : text, text);
        player->openPlaylist(file);
        EXPECT_EQ(stateOf(list()), before);
        EXPECT_TRUE(list().isChanged());

        writeFile(file, text);
        player->revertPlaylist();
        EXPECT_EQ(stateOf(list()), "Road trip|" + file + "|0\n/a.mp3|a|||0.000000\n/b.mp3|b|||0.000000")
            << "as the file says, under the name that the store has";
        EXPECT_FALSE(list().isChanged());
        player->clearPlaylist();
        EXPECT_EQ(names(), "");
    }
    EXPECT_EQ(fs::status(folder / "state").permissions(), fs::perms(0700));
    EXPECT_EQ(reports, "");
}

TEST_F(UnsavedLists, WithoutAFileAreOfferedTheLastTenOfThoseWithoutAName) {
    append(*player, rows({"/named.mp3"}));
    player->renamePlaylist("Party");
    for (int number = 0; number < 12; ++number) {
        player->clearPlaylist();
        append(*player, rows({"/" + std::to_string(number) + ".mp3"}));
        list().markChanged(list().changedAt() + 1000 * (number - 60));
    }
    player->clearPlaylist();
    player->clearPlaylist();
    EXPECT_EQ(names(), "Party ? ? ? ? ? ? ? ? ? ? ");
    restart();
    EXPECT_EQ(list().entryCount(), 0) << "it starts with an empty list";
    ASSERT_EQ(names(), "Party ? ? ? ? ? ? ? ? ? ? ");

    const auto open = [&](std::size_t index) {
        player->openUnsaved(player->listKeeper.lists().at(index).id);
    };
    open(1);
    EXPECT_EQ(list().entryAt(0)->source, "/11.mp3");
    const std::uint64_t shown = list().id;
    open(1);
    EXPECT_EQ(list().id, shown) << "it is shown already";
    open(0);
    EXPECT_EQ(names(), "Party ? ? ? ? ? ? ? ? ? ? ") << "to look at one changes nothing";
    append(*player, rows({"/second.mp3"}));
    player->renamePlaylist("");
    open(1);
    EXPECT_EQ(names(), "? ? ? ? ? ? ? ? ? ? ") << "it is the last one changed, and the oldest goes";
    open(0);
    EXPECT_EQ(list().entryCount(), 2);
    player->savePlaylist(folder / "Saved at last.tuq");
    EXPECT_EQ(list().name, "Saved at last");
    EXPECT_FALSE(list().isChanged());
    EXPECT_EQ(names(), "? ? ? ? ? ? ? ? ? ");
    EXPECT_EQ(player->internalPlaylistManager->indexOfName("Saved at last"), 0);
    open(0);
    list().entries.clear();
    list().markChanged();
    player->clearPlaylist();
    EXPECT_EQ(names(), "? ? ? ? ? ? ? ? ") << "the user has emptied it";
}

TEST_F(UnsavedLists, OfTwoProgramsAreNotMixed) {
    player->openPlaylist(file);
    change(*player);
    const std::string mine = stateOf(list());
    store(*player);
    auto second = newProgram();
    second->openPlaylist(file);
    EXPECT_FALSE(second->playlist->isChanged()) << "what another program shows is its own";
    append(*second, rows({"/second.mp3"}));
    second->playlist->markChanged(list().changedAt() + 1000);
    const std::string theirs = stateOf(*second->playlist);
    store(*second);
    player->clearPlaylist();
    second.reset(); // killed
    restart();
    EXPECT_EQ(names(), "Road Road! ") << "the older changes are offered apart";
    const std::string older = player->listKeeper.lists().at(1).id;
    second = newProgram();
    const auto both = {player.get(), second.get()};
    for (TulPlayer* program : both) {
        program->openPlaylist(file);
        EXPECT_EQ(stateOf(*program->playlist), theirs) << "both take up the same";
    }
    for (TulPlayer* program : both) {
        move(*program, 0, 1);
        store(*program);
    }
    for (TulPlayer* program : both)
        program->clearPlaylist();
    player->openUnsaved(older);
    EXPECT_EQ(stateOf(list()), mine);
    player->clearPlaylist();
    EXPECT_EQ(names(), "Road Road! Road! ");
    player->openPlaylist(file);
    player->savePlaylist(file);
    EXPECT_EQ(names(), "Road! Road! ") << "none of them is the saved list's";
    player->clearPlaylist();
    player->openPlaylist(file);
    EXPECT_FALSE(list().isChanged());
}

TEST_F(UnsavedLists, AreStoredAgainAfterASaveThatFailedOrCameTooEarly) {
    player->openPlaylist(file);
    change(*player);
    player->savePlaylist(folder); // no file
    EXPECT_TRUE(list().isChanged());
    EXPECT_EQ(player->internalPlaylistManager->count(), 1);
    EXPECT_EQ(reports, "unsaved" + std::to_string(static_cast<int>(FileStatus::notAllowed)) + " ");
    reports.clear();

    store(*player);
    fs::remove_all(folder / "state");
    writeFile(folder / "state", "in the way");
    move(*player, 0, 1);
    store(*player);
    EXPECT_EQ(reports, std::to_string(static_cast<int>(FileStatus::notAllowed)) + " ");
    fs::remove(folder / "state");
    fs::create_directories(folder / "state/lists");
    for (const char* junk : {"list-1.tuq", "other-2.tuq", "shown-9.tuq"})
        writeFile(folder / "state/lists" / junk, R"({"file":"/x","name":)");
    const std::string before = stateOf(list());
    player->clearPlaylist();
    EXPECT_EQ(names(), "Road ") << "what could not be stored then is stored now";
    player->openPlaylist(file);
    EXPECT_EQ(stateOf(list()), before);
}

TEST_F(UnsavedLists, ChoosingTheCurrentListReloadsItOnlyWhenAnotherIsShown) {
    player->openPlaylist(file);
    const std::uint64_t shown = list().id;
    player->selectInternalPlaylist(0);
    EXPECT_EQ(list().id, shown);
    player->clearPlaylist();
    player->selectInternalPlaylist(0);
    EXPECT_EQ(list().name, "Road");
}

} // namespace
