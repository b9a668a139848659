#include "core/player/TulNetworkSharing.h"
#include "core/player/TulPlayer.h"
#include "tests/core/RecordingBass.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <limits>
#include <thread>

namespace {

using recording::bass;
using State = TulPlaybackState;

/// A player on the recording library, with the tasks that its executor was given.
class Player : public testing::Test {
protected:
    Player() {
        bass = {};
        player = std::make_unique<TulPlayer>();
        useExecutor();
    }

    void useExecutor() {
        player->setExecutor([this](std::function<void()> task) { tasks.push_back(std::move(task)); });
    }
    void add(const std::vector<std::string>& sources) {
        for (const auto& source : sources)
            player->playlist->addEntry(source);
    }
    static std::string path(const std::string& name) { return (support::scratch() / name).string(); }
    /// A playlist file of one entry; returns its path.
    static std::string writeList(const std::string& name) {
        support::writeFile(path(name + ".tuq"),
                           R"({"name":")" + name + R"(","entries":[{"source":"x.mp3","title":"T"}]})");
        return path(name + ".tuq");
    }
    /// In place, or when it has been given up.
    TulPlayer::Opened note(std::string& outcomes, char letter) {
        return [&outcomes, letter](TulPlayer::Opening outcome) {
            outcomes += letter;
            outcomes += outcome == TulPlayer::Opening::done       ? '+'
                        : outcome == TulPlayer::Opening::rejected ? '-'
                                                                  : '0';
        };
    }

    /// Fires the end sync on another thread; does not run the tasks posted to the main thread.
    static void fireEnd(HSTREAM handle) {
        SYNCPROC* sync = bass.channels.at(handle).endSync;
        std::thread([sync, handle] { sync(1, handle, 0, nullptr); }).join();
    }

    void runTasks() {
        while (!tasks.empty())
            for (const auto& task : std::exchange(tasks, {}))
                task();
    }

    void endTrack() {
        bass.last().state = BASS_ACTIVE_STOPPED;
        fireEnd(bass.lastHandle);
        runTasks();
    }

    void fail(DWORD status, DWORD httpStatus = 0) {
        bass.fail(status, httpStatus);
        fireEnd(bass.lastHandle);
        runTasks();
    }

    State state() const { return player->playbackState(); }
    std::int32_t current() const { return player->playlist->currentIndex; }
    TulFailure::Kind failureOf(std::int32_t index) const {
        return player->playlist->entryAt(index)->failure.kind;
    }

    std::vector<std::function<void()>> tasks;
    std::unique_ptr<TulPlayer> player;
};

TEST_F(Player, StartsTheCurrentEntryAndBeginsWhatIsInNoListAgain) {
    player->play();
    EXPECT_FALSE(player->takeSongChanged());
    EXPECT_EQ(state(), State::stopped);

    add({"/x/a.flac", "/x/b.mp3"});
    player->setVolume(0.75F);
    player->setBalance(-0.5F);
    player->play();
    EXPECT_TRUE(player->isPlaying());
    EXPECT_EQ(bass.last().volume, 0.75F);
    EXPECT_EQ(bass.last().balance, -0.5F);
    EXPECT_EQ(player->stream->title, "a");
    EXPECT_TRUE(player->playlist->entryAt(0)->active);
    EXPECT_TRUE(player->takeSongChanged());
    EXPECT_FALSE(player->takeSongChanged());
    player->stream->artist = "artist";
    player->stream->album = "album";
    for (const char* line : {"artist", "album", "artist"})
        EXPECT_EQ(player->stream->nextInfoLine(), line);
    player->previous();
    EXPECT_EQ(current(), 1);
    player->next();
    EXPECT_EQ(current(), 0);
    EXPECT_EQ(bass.channels.size(), 1U);

    player->clearPlaylist();
    player->pause();
    bass.endFade();
    bass.last().position = 40;
    player->next();
    EXPECT_EQ(state(), State::playing);
    EXPECT_EQ(bass.last().position, 0U);
    EXPECT_EQ(bass.last().volume, 0.75F);
    player->startCurrentEntry();
    EXPECT_EQ(player->stream, nullptr);
    EXPECT_TRUE(bass.channels.empty());
}

TEST_F(Player, ARemovedEntryPlaysToItsEndAndItsSuccessorFollows) {
    add({"/x/a.mp3", "/x/b.mp3", "/x/c.mp3"});
    player->playlist->selectEntry(1);
    player->startCurrentEntry();
    const auto edit = [this](auto change) {
        change(*player);
        player->prepareNext();
    };
    EXPECT_EQ(bass.last().next, "1 /x/c.mp3");
    TulPlaylist::Entries removed;
    edit([&](TulPlayer& p) { removed = p.removeEntries({1, 2}); });
    EXPECT_EQ(bass.last().next, "1 /x/a.mp3");
    EXPECT_EQ(player->playingEntry(), nullptr);
    fail(BASS_STREAM_LOST);
    EXPECT_EQ(failureOf(0), TulFailure::Kind::none) << "it was another that failed";
    EXPECT_EQ(player->stream->source, "/x/a.mp3");
    edit([&](TulPlayer& p) { p.insertEntries({1, 2}, std::move(removed)); });
    EXPECT_EQ(player->playlist->currentIndex, 0) << "a is played by now";

    edit([&](TulPlayer& p) { removed = p.removeEntries({0}); });
    edit([&](TulPlayer& p) { p.insertEntries({0}, std::move(removed)); });
    EXPECT_EQ(player->playingEntry(), player->playlist->entryAt(0)) << "it was still being played";
    edit([&](TulPlayer& p) { p.removeEntries({0}); });
    player->stop();
    bass.endFade();
    player->play();
    EXPECT_EQ(player->stream->source, "/x/b.mp3") << "what was stopped is not played again";

    const auto replaced = player->exchangePlaylist(std::make_unique<TulPlaylist>(), 0);
    edit([](TulPlayer&) {});
    EXPECT_EQ(bass.last().next, "0 -");
    EXPECT_TRUE(player->isPlaying());
    EXPECT_EQ(replaced->list->currentIndex, 0);
}

TEST_F(Player, ASourceIsOpenedAndQueuedAsTheSameKind) {
    const std::pair<std::string, DWORD> cases[] = {
        {"/a.flac", BASS_SOURCE_FLAC},
        {"/a.ape", BASS_SOURCE_APE},
        {"/a.opus", BASS_SOURCE_OPUS},
        {"/a.wv", BASS_SOURCE_WV},
        {"/a.FLAC", BASS_SOURCE_FILE},
        {"/music.old/track", BASS_SOURCE_FILE},
        {"/HTTP/a.flac", BASS_SOURCE_FLAC},
        {"/https/a.flac", BASS_SOURCE_URL},
        {"http://h/a.flac", BASS_SOURCE_URL},
        {"HTTP://h/a.flac", BASS_SOURCE_URL},
        {"HttpS://h/a", BASS_SOURCE_URL},
        {"/track", BASS_SOURCE_NONE}, // nothing is created
        {"", BASS_SOURCE_NONE},
    };
    for (const auto& [source, kind] : cases) {
        SCOPED_TRACE(source);
        const bool opens = kind != BASS_SOURCE_NONE;
        const std::string expected = std::to_string(kind) + " " + (opens ? source : "-");
        TulStream stream;
        stream.open(source);
        EXPECT_EQ(stream.isPlaying(), opens);
        EXPECT_EQ(stream.failure().kind == TulFailure::Kind::notOpened, !opens);
        EXPECT_TRUE(!opens || bass.last().source == expected) << bass.last().source;
        stream.open("/a.mp3");
        stream.setNext(source);
        EXPECT_EQ(bass.last().next, expected);
    }
}

TEST_F(Player, QueuesWhatFollowsWheneverThatChangesAndOnlyThen) {
    const auto move = [this](int from, int to) { player->playlist->moveEntries(from, to); };
    const auto select = [this](int index) { player->playlist->selectEntry(index); };
    const struct {
        std::vector<std::string> list;
        std::function<void()> change;
        std::string next;
    } cases[] = {
        {{"/a.mp3", "/b.flac"}, [] {}, "2 /b.flac"},
        {{"/a.mp3"}, [] {}, "1 /a.mp3"},
        {{"/a.mp3", "/b.flac", "/c.wv"}, [&] { move(2, 1); }, "5 /c.wv"},
        {{"/a.mp3", "/b.flac", "/c.wv"}, [&] { move(0, 2); }, "2 /b.flac"},
        {{"/a.mp3", "/b.flac", "/c.wv"}, [&] { select(1); }, "5 /c.wv"},
        {{"/a.mp3"}, [&] { add({"http://h/live"}); }, "6 http://h/live"},
        {{"/a.mp3", "/b.flac"}, [&] { player->playlist->entries.pop_back(); }, "1 /a.mp3"},
        {{"/a.mp3", "/b.flac"}, [&] { player->clearPlaylist(); }, "0 -"},
        {{"/a.mp3", "/b.flac"}, [&] { player->setPlaylist(std::make_unique<TulPlaylist>()); }, "0 -"},
        {{"/a.mp3", "/b.flac"}, [&] { player->stop(); }, "0 -"},
        {{"/a.mp3", "/b.flac"}, [&] { player->stop(), player->play(); }, "2 /b.flac"},
        {{"/a.mp3", "/b.flac"}, [&] { player->next(); }, "1 /a.mp3"},
    };
    for (const auto& row : cases) {
        const auto& [list, change, next] = row;
        SCOPED_TRACE(&row - cases);
        player->clearPlaylist();
        add(list);
        player->startCurrentEntry();
        change();
        player->update();
        EXPECT_EQ(bass.last().next, next);
        const int changes = bass.last().nextChanges;
        player->update();
        EXPECT_EQ(bass.last().nextChanges, changes) << "nothing has changed";
    }
}

TEST_F(Player, ModesDecideWhatIsQueuedAndWhatFollows) {
    const auto repeat = [this](TulRepeat mode) { return [this, mode] { player->setRepeat(mode); }; };
    const struct {
        std::int32_t from;
        std::function<void()> set;
        std::string next;     // queued, when the first one plays
        std::int32_t current; // after its end
        State state;
    } cases[] = {
        {1, repeat(TulRepeat::off), "1 /c.mp3", 2, State::playing},
        {2, repeat(TulRepeat::off), "0 -", 2, State::stopped},
        {2, repeat(TulRepeat::list), "1 /a.mp3", 0, State::playing},
        {1, repeat(TulRepeat::track), "1 /b.mp3", 1, State::playing},
        {1, [this] { player->setStopsAfterEntry(true); }, "0 -", 1, State::stopped},
        {1, [this] { player->setStopsAfterEntry(true), player->setStopsAfterEntry(false); }, "1 /c.mp3", 2,
         State::playing},
        {0, [this] { player->setStopsAfterEntry(true), player->next(); }, "1 /c.mp3", 2, State::playing},
    };
    add({"/a.mp3", "/b.mp3", "/c.mp3"});
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        player->setRepeat(TulRepeat::list);
        player->playlist->selectEntry(row.from);
        player->startCurrentEntry();
        row.set();
        EXPECT_EQ(bass.last().next, row.next);
        endTrack();
        EXPECT_EQ(current(), row.current);
        EXPECT_EQ(state(), row.state);
        EXPECT_FALSE(player->stopsAfterEntry()) << "once";
    }
    player->setRepeat(TulRepeat::track);
    player->playlist->selectEntry(0);
    player->startCurrentEntry();
    endTrack();
    fail(BASS_STREAM_LOST);
    EXPECT_EQ(current(), 1) << "what broke off is not tried again";
    player->next();
    EXPECT_EQ(current(), 2) << "by hand to another";
}

TEST_F(Player, ShufflesWithoutRepetitionAndGoesBackThroughWhatWasPlayed) {
    constexpr std::int32_t count = 40;
    for (int i = 0; i < count; ++i)
        add({"/" + std::to_string(i) + ".mp3"});
    player->playlist->selectEntry(7);
    player->startCurrentEntry();
    player->setShuffled(true);
    player->previous();
    EXPECT_EQ(current(), 7) << "nothing has been played before";
    std::vector<std::int32_t> played{current()};
    for (int i = 1; i < count; ++i) {
        const std::string queued = bass.last().next;
        i % 2 ? endTrack() : player->next();
        EXPECT_EQ("1 /" + std::to_string(current()) + ".mp3", queued);
        played.push_back(current());
    }
    EXPECT_FALSE(std::ranges::is_sorted(played));
    const auto isOrder = [&](std::vector<std::int32_t> rows) {
        std::ranges::sort(rows);
        return rows.front() == 0 && rows.back() == count - 1 &&
               std::ranges::adjacent_find(rows) == rows.end();
    };
    EXPECT_TRUE(isOrder(played));

    for (int i = count - 2; i >= count - 5; --i) {
        player->previous();
        EXPECT_EQ(current(), played[i]);
    }
    player->playlist->entries.erase(player->playlist->entries.begin() + played[count - 4]); // it was to come
    player->playlist->currentIndex -= played[count - 4] < current() ? 1 : 0;
    player->update();
    endTrack();
    EXPECT_EQ(player->stream->source, "/" + std::to_string(played[count - 3]) + ".mp3");
    player->next();
    player->next();
    const std::string last = player->stream->source;
    player->setRepeat(TulRepeat::off);
    EXPECT_EQ(bass.last().next, "0 -") << "all have been played";
    player->setRepeat(TulRepeat::list);
    EXPECT_TRUE(bass.last().next != "0 -" && bass.last().next != "1 " + last) << bass.last().next;

    player->setShuffled(false);
    EXPECT_EQ(bass.last().next, "1 " + player->playlist->followingEntry()->source);
    player->clearPlaylist();
    add({"/only.mp3"});
    player->setShuffled(true);
    player->startCurrentEntry();
    EXPECT_EQ(bass.last().next, "1 /only.mp3");
}

TEST_F(Player, StreamTitlesReplaceTheEntrysTexts) {
    add({"http://h/radio", "/a.mp3"});
    player->startCurrentEntry();
    const auto texts = [this] {
        player->update();
        return player->stream->title + "|" + player->stream->artist + "|" + player->stream->album;
    };
    bass.last().isLive = true;
    EXPECT_EQ(texts(), "radio||");
    EXPECT_FALSE(player->takeSongInfoChanged());
    bass.last().tags = {{BASS_TAG_ICY, "icy-name: Station\n"}};
    EXPECT_EQ(texts(), "Station||");
    EXPECT_TRUE(player->takeSongInfoChanged());
    bass.last().tags[BASS_TAG_META] = "StreamTitle='Band - Song';";
    EXPECT_EQ(texts(), "Band - Song||Station");
    EXPECT_EQ(player->stream->nextInfoLine(), "Station");
    EXPECT_EQ(player->stream->nextInfoLine(), "Station");
    EXPECT_TRUE(player->stream->isLive());
    EXPECT_TRUE(player->takeSongInfoChanged());
    EXPECT_EQ(texts(), "Band - Song||Station");
    EXPECT_FALSE(player->takeSongInfoChanged());
    EXPECT_EQ(player->playlist->entryAt(0)->title, "radio") << "the list keeps its own";
    bass.last().tags[BASS_TAG_META] = "StreamTitle='';";
    EXPECT_EQ(texts(), "Station||");
    player->next();
    bass.last().tags = {{BASS_TAG_OGG, std::string("TITLE=no\0", 9)}};
    EXPECT_EQ(texts(), "a||") << "a file's are read elsewhere";
}

TEST_F(Player, AdvancesOnceOnTheMainThreadAtTheEndOfATrack) {
    add({"/a.mp3", "/b.mp3", "/c.mp3"});
    player->playlist->selectEntry(1);
    player->startCurrentEntry();
    bass.last().state = BASS_ACTIVE_STOPPED;
    fireEnd(1);
    EXPECT_EQ(current(), 1);
    EXPECT_EQ(state(), State::playing) << "its end has not reached the player";
    runTasks();
    EXPECT_EQ(current(), 2);
    player->setExecutor({}); // then where the end is reported
    fireEnd(2);
    EXPECT_EQ(current(), 0);
    useExecutor();

    // A command came first: the end of the old stream must not skip an entry.
    fireEnd(3);
    player->next();
    runTasks();
    EXPECT_EQ(current(), 1);
    // The same with the same entry started again.
    fireEnd(4);
    player->startCurrentEntry();
    runTasks();
    EXPECT_EQ(current(), 1);

    player->clearPlaylist();
    bass.last().position = 80;
    endTrack();
    EXPECT_EQ(state(), State::stopped);
    EXPECT_EQ(bass.last().position, 0U);
    player->play();
    EXPECT_EQ(state(), State::playing);

    SYNCPROC* sync = bass.last().endSync;
    fireEnd(5);
    player.reset();
    EXPECT_TRUE(bass.channels.empty());
    runTasks();
    sync(1, 5, 0, nullptr);
    EXPECT_TRUE(tasks.empty());
}

TEST_F(Player, PausesInEveryState) {
    const struct {
        std::function<void()> bringAbout;
        State before;
        State pressed; // right after the press
        State later;   // when a fade is over
    } cases[] = {
        {[] {}, State::playing, State::fadingOut, State::paused},
        {[] { bass.last().state = BASS_ACTIVE_STALLED; }, State::waiting, State::paused, State::paused},
        {[] {
             bass.last().status = BASS_STREAM_CONNECTING;
             bass.last().state = BASS_ACTIVE_STALLED;
         },
         State::connecting, State::paused, State::paused},
        {[this] { player->stop(); }, State::fadingOut, State::fadingOut, State::stopped},
        {[this] { player->stop(), bass.endFade(); }, State::stopped, State::stopped, State::stopped},
        {[] { bass.fail(BASS_STREAM_LOST); }, State::failed, State::failed, State::failed},
    };
    add({"/a.mp3", "/b.mp3"});
    for (const auto& [bringAbout, before, pressed, later] : cases) {
        SCOPED_TRACE(static_cast<int>(later));
        player->startCurrentEntry();
        bringAbout();
        EXPECT_EQ(state(), before);
        player->pause();
        player->pause();
        EXPECT_EQ(state(), pressed);
        player->setVolume(0.25F);
        EXPECT_EQ(bass.last().sliding, pressed == State::fadingOut) << "the volume does not end the fade";
        if (bass.last().sliding) bass.endFade();
        player->update();
        EXPECT_EQ(state(), later);
        bass.last().status = BASS_STREAM_OPEN;
        player->play();
        EXPECT_EQ(state(), State::playing);
        EXPECT_EQ(bass.last().volume, 0.25F);
    }

    player->pause();
    player->play();
    bass.endFade(); // too late: it was on the way already
    player->update();
    EXPECT_EQ(state(), State::playing);
}

TEST_F(Player, TheLastRequestAppliesAfterAFade) {
    add({"/a.mp3"});
    player->play();
    for (const bool fadeIsOver : {false, true}) {
        for (const QWORD sought : {QWORD{0}, QWORD{40}}) {
            player->stop();
            EXPECT_EQ(bass.last().position, 0U);
            bass.last().position = 2; // the fade was played from there
            if (fadeIsOver) bass.endFade();
            if (sought != 0) player->stream->seek(static_cast<double>(sought) / 8);
            player->play();
            EXPECT_EQ(bass.last().position, sought);
            EXPECT_EQ(bass.last().volume, 0.5F);
            EXPECT_EQ(state(), State::playing);
        }
    }
    add({"/b.mp3"});
    player->stop();
    endTrack();
    EXPECT_EQ(current(), 0) << "a track that ends in its fade is not followed";
    EXPECT_EQ(state(), State::stopped);
    player->play();
    player->pause();
    endTrack();
    EXPECT_EQ(current(), 1);
    EXPECT_EQ(state(), State::paused);
    bass.last().volume = 0.01F; // of the fade that it has joined
    player->play();
    EXPECT_EQ(bass.last().volume, 0.5F);
}

TEST_F(Player, SkipsWhatFailsAfterATrackButNotWhatTheUserSelected) {
    constexpr DWORD good = BASS_STREAM_OPEN;
    constexpr DWORD dead = BASS_STREAM_REFUSED;
    const struct {
        std::vector<DWORD> entries; // statuses; the first is the one that plays and ends
        std::vector<DWORD> again;   // of later starts, from the first entry on
        std::int32_t current;
        State state;
    } cases[] = {
        {{good, good}, {}, 1, State::playing},
        {{good, dead, dead, good}, {}, 3, State::playing},
        {{good, dead, dead}, {good}, 0, State::playing},
        {{good, dead, dead}, {dead}, 0, State::failed},
        {{good}, {dead}, 0, State::failed},
        {{good, BASS_STREAM_NONE, BASS_STREAM_NONE}, {BASS_STREAM_NONE}, 0, State::failed},
        {{dead, good}, {}, 0, State::failed}, // selected
    };
    for (const bool atOnce : {false, true}) {
        for (const auto& row : cases) {
            const auto& [entries, again, expected, expectedState] = row;
            SCOPED_TRACE((&row - cases) * 10 + (atOnce ? 1 : 0));
            player->clearPlaylist();
            add(std::vector<std::string>(entries.size(), "/a.mp3"));
            std::vector<DWORD> statuses = entries;
            statuses.insert(statuses.end(), again.begin(), again.end());
            std::size_t starts = 0;
            const auto playOut = [&](auto start) {
                const DWORD status = statuses.at(starts++);
                bass.status =
                    atOnce || status == BASS_STREAM_NONE || status == good ? status : BASS_STREAM_CONNECTING;
                start();
                if (status == dead && !atOnce) bass.fail(status), fireEnd(bass.lastHandle);
            };
            playOut([&] { player->startCurrentEntry(); });
            if (entries.front() == good) {
                bass.last().state = BASS_ACTIVE_STOPPED;
                fireEnd(bass.lastHandle);
            }
            while (!tasks.empty() && starts < statuses.size())
                playOut([&] { std::exchange(tasks, {}).front()(); });
            runTasks();
            EXPECT_EQ(current(), expected);
            EXPECT_EQ(state(), expectedState);
        }
    }
}

TEST_F(Player, AnEntryKeepsItsFailureUntilItPlays) {
    using Kind = TulFailure::Kind;
    add({"http://h/a", "/b.mp3"});
    player->play();
    for (const auto& [status, kind] :
         {std::pair{BASS_STREAM_REFUSED, Kind::refused}, {BASS_STREAM_HTTP_STATUS, Kind::httpStatus}}) {
        fail(status, status == BASS_STREAM_HTTP_STATUS ? 404 : 0);
        EXPECT_EQ(state(), State::failed);
        EXPECT_EQ(player->failure().kind, kind);
        EXPECT_EQ(failureOf(0), kind);
        EXPECT_EQ(player->failure().httpStatus, kind == Kind::httpStatus ? 404U : 0U);
        bass.status = BASS_STREAM_CONNECTING;
        player->play(); // tries again
        player->update();
        EXPECT_EQ(state(), State::connecting);
        EXPECT_EQ(failureOf(0), kind);
        bass.last().status = BASS_STREAM_OPEN;
        bass.last().state = BASS_ACTIVE_PLAYING;
        player->update();
        EXPECT_EQ(failureOf(0), Kind::none);
    }

    player->pause();
    fail(BASS_STREAM_LOST);
    EXPECT_EQ(current(), 0) << "paused";
    EXPECT_EQ(state(), State::failed);
    bass.status = BASS_STREAM_OPEN;
    player->play();
    fail(BASS_STREAM_LOST);
    EXPECT_EQ(current(), 1) << "it had played: that is the end of the track";
    EXPECT_EQ(failureOf(0), Kind::lost);

    player->clearPlaylist();
    add({"/c.mp3"});
    fail(BASS_STREAM_UNREADABLE);
    EXPECT_EQ(failureOf(0), Kind::none) << "another entry's failure";
}

TEST_F(Player, MayBeDestroyedWhileAnEndIsReported) {
    for (int i = 0; i < 50; ++i) {
        std::atomic<int> reported = 0;
        std::atomic<bool> done = false;
        player = std::make_unique<TulPlayer>();
        player->setExecutor([&reported](const std::function<void()>&) { ++reported; });
        std::thread syncThread([&done] {
            while (!done)
                TulPlayer::onStreamEnded(1, 1, 0, nullptr);
        });
        EXPECT_TRUE(support::waitFor([&reported] { return reported > 0; }));
        player.reset();
        done = true;
        syncThread.join();
    }
}

TEST_F(Player, KeepsThePlaylistWhenAFileIsRejected) {
    support::writeFile(path("bad.tuq"), R"({"name":"bad"})");
    support::writeFile(path("empty.tuq"), R"({"name":"empty","entries":[]})");
    player->setStorePath(path("playlists.json"));
    auto& manager = *player->internalPlaylistManager;
    std::string outcomes;
    const std::string first = writeList("a");
    player->openPlaylist(first, note(outcomes, 'a'));
    EXPECT_TRUE(player->isPlaying());
    const TulPlaylist* opened = player->playlist.get();
    player->openPlaylist(path("bad.tuq"), note(outcomes, 'x'));
    EXPECT_EQ(player->playlist.get(), opened);
    EXPECT_EQ(manager.count(), 1);

    player->openPlaylist(path("empty.tuq"), note(outcomes, 'e'));
    EXPECT_EQ(outcomes, "a+x-e+");
    EXPECT_TRUE(player->isPlaying()) << "an empty one leaves the stream alone";
    support::writeFile(first, "{broken for now");
    for (const int nothing : {1, -1, 2, 0})
        player->selectInternalPlaylist(nothing);
    EXPECT_EQ(player->playlist->name, "empty");
    EXPECT_EQ(manager.currentIndex, 1);

    std::string reported;
    player->reportFile = [&](const std::string& file, FileStatus status) {
        reported += file + (status == FileStatus::notFound ? " not found\n" : " other\n");
    };
    player->savePlaylist(path("no/such/folder.tuq"));
    player->openPlaylist(path("gone.m3u"));
    EXPECT_EQ(reported, path("no/such/folder.tuq") + " not found\n" + path("gone.m3u") + " not found\n");
    EXPECT_EQ(manager.count(), 2);

    support::writeFile(path("cut.m3u"), "/a.mp3\n" + std::string(2 << 20, 'x'));
    player->openPlaylist(path("cut.m3u"));
    EXPECT_EQ(player->playlist->entryCount(), 1);
    EXPECT_EQ(player->playlist->path, "") << "saving it there would remove the rest";
    EXPECT_EQ(manager.count(), 2);

    player->playlist->name = "C";
    player->savePlaylist(path("c.tuq"));
    TulInternalPlaylistManager stored;
    stored.storePath = path("playlists.json");
    stored.load();
    ASSERT_EQ(stored.count(), 3);
    EXPECT_EQ(stored.playlistAt(2).second, "C");
}

TEST_F(Player, OpensTheLastRequestInTheBackground) {
    player->setStorePath(path("late.json"));
    player->workers.setWake([] {});
    const auto deliverUntil = [this](auto condition) {
        return support::waitFor([&] {
            player->workers.deliver();
            return condition();
        });
    };
    std::string outcomes;
    player->openPlaylist(writeList("a"), note(outcomes, 'a'));
    EXPECT_EQ(player->playlist->entryCount(), 0) << "a call returns at once";
    player->openPlaylist(writeList("b"), note(outcomes, 'b'));
    ASSERT_TRUE(deliverUntil([&] { return player->playlist->name == "b"; }));
    EXPECT_EQ(outcomes, "a0b+");
    EXPECT_TRUE(player->isPlaying());

    player->openPlaylist(writeList("c"), note(outcomes, 'c'));
    player->clearPlaylist();
    player->playlist->name = "mine";
    player->savePlaylist(path("mine.tuq"));
    player->playlist->name = "changed later";
    ASSERT_TRUE(deliverUntil([&] { return player->internalPlaylistManager->count() == 2; }));
    EXPECT_EQ(player->internalPlaylistManager->currentIndex, 1);
    player->selectInternalPlaylist(0, note(outcomes, 's'));
    ASSERT_TRUE(deliverUntil([&] { return outcomes == "a0b+c0s+"; }));
    EXPECT_EQ(player->playlist->name, "b");
    EXPECT_EQ(player->internalPlaylistManager->currentIndex, 0);
    player.reset(); // when what was saved is on the disk
    EXPECT_EQ(support::readFile(path("mine.tuq")), R"({"name":"mine","entries":[]})");
    EXPECT_NE(support::readFile(path("late.json")).find("mine.tuq"), std::string::npos);
}

TEST_F(Player, NeverBlocksTheMainThreadForALongList) {
    support::writeFile(path("long.m3u"), std::string(1'000'000, '\n'));
    player->workers.setWake([] {});
    std::string outcomes;
    double longest = 0; // seconds of this thread's own time, so that a busy machine does not count
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const auto measure = [&](const auto& step) {
        const double start = now();
        step();
        longest = std::max(longest, now() - start);
    };
    const auto deliverUntil = [&](const std::string& expected) {
        return support::waitFor(
            [&] { return measure([&] { player->workers.deliver(); }), outcomes == expected; },
            std::chrono::seconds(60));
    };
    double best = 1; // of some rounds: the memory of a busy machine is slow at times
    for (int round = 0; round < 3; ++round) {
        longest = 0;
        outcomes.clear();
        measure([&] { player->openPlaylist(path("long.m3u"), note(outcomes, 'l')); });
        ASSERT_TRUE(deliverUntil("l+"));
        EXPECT_GT(player->playlist->entryCount(), 100'000);
        player->openPlaylist(path("long.m3u"), note(outcomes, 'l'));
        measure([&] { player->clearPlaylist(); }); // what is read comes to nothing
        player->openPlaylist(writeList("short"), note(outcomes, 's'));
        ASSERT_TRUE(deliverUntil("l+l0s+"));
        best = std::min(best, longest);
    }
    EXPECT_LT(best, 0.016);
}

TEST_F(Player, SharesEveryTrackThroughOneEncoderWhileItRuns) {
    const TulNetworkSharing& sharing = *player->networkSharing;
    const auto shares = [&] { return sharing.port == 9090 && bass.encoder.channel == bass.lastHandle; };
    add({"/a.mp3", "/b.mp3"});
    player->networkSharingEnabled = true;
    bass.hasEncoder = false;
    player->play();
    EXPECT_EQ(sharing.port, 0U);
    EXPECT_TRUE(sharing.isEncoderMissing);
    const std::string folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    EXPECT_EQ(bass.encodersTried,
              (std::vector<std::string>{"./oggenc", '"' + folder + "/oggenc\"", "oggenc"}));
    bass.hasEncoder = true; // installed meanwhile
    player->next();
    EXPECT_TRUE(shares());
    EXPECT_FALSE(sharing.isEncoderMissing);
    player->next();
    EXPECT_TRUE(shares());
    EXPECT_EQ(bass.encoder.starts, 1);

    bass.encoder.runs = false; // it has died
    player->next();
    EXPECT_TRUE(shares());
    EXPECT_EQ(bass.encoder.starts, 2);
    bass.encoder.runs = false;
    player->update();
    EXPECT_EQ(sharing.port, 0U);
    bass.portIsFree = false;
    player->next();
    bass.portIsFree = true;
    player->next();
    EXPECT_EQ(sharing.port, 0U) << "a taken port is not asked for again";
    EXPECT_EQ(bass.encoder.starts, 3);

    TulNetworkSharing& changed = *player->networkSharing;
    EXPECT_FALSE(changed.configure("Kitchen", 9090)) << "a name drops no listener";
    EXPECT_EQ(bass.encoder.name, "Kitchen");
    EXPECT_TRUE(changed.configure("", 8000));
    EXPECT_FALSE(bass.encoder.runs);
    EXPECT_EQ(changed.listenerCount(), 0U);
    EXPECT_EQ(changed.start(*player->stream), 8000);
    EXPECT_EQ(bass.encoder.name, "Tulplayer");
    EXPECT_EQ(changed.listenerCount(), 3U);
    player.reset();
    EXPECT_FALSE(bass.encoder.runs);
}

TEST_F(Player, BarsGrowWithTheirBandsAndStayWithinTheirHeight) {
    TulStream stream;
    EXPECT_EQ(stream.spectrum(), (TulSpectrum{1, 1, 1, 1, 1, 1, 1, 1}));
    stream.open("/a.mp3");
    const TulSpectrum silent{2, 2, 2, 2, 2, 2, 2, 2};
    for (const auto& [peak, height] : {std::pair{0.0F, 2},
                                       {0.01F, 4},
                                       {0.15F, 24},
                                       {1e30F, 25},
                                       {-1.0F, 2},
                                       {std::numeric_limits<float>::quiet_NaN(), 2}}) {
        bass.magnitudes[100] = peak;
        EXPECT_EQ(stream.spectrum(), (TulSpectrum{2, 2, 2, 2, 2, 2, height, 2})) << peak;
    }
    std::ptrdiff_t before = -1;
    for (std::size_t bin = 2; bin <= 431; ++bin) { // up to 18.5 kHz each bin is in one band
        bass.magnitudes.assign(512, 0);
        bass.magnitudes[bin - 1] = 1;
        const TulSpectrum bars = stream.spectrum();
        const auto band = std::ranges::find(bars, 25) - bars.begin();
        EXPECT_EQ(std::ranges::count(bars, 25), 1) << bin;
        EXPECT_TRUE(band == before || band == before + 1) << bin;
        before = band;
    }
    EXPECT_EQ(before, 7);
    bass.dataFails = true;
    EXPECT_EQ(stream.spectrum(), silent);
}

} // namespace
