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
        player->setExecutor([this](std::function<void()> task) { tasks.push_back(std::move(task)); });
    }

    void add(const std::vector<std::string>& sources) {
        for (const auto& source : sources)
            player->playlist->addEntry(source);
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

    /// The end sync, on a thread of the library's, without what the main thread does then.
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

TEST(PlaybackStateTest, FollowsFromTheStreamAndWhatWasAskedFor) {
    const TulFailure timeout{TulFailure::Kind::timeout};
    constexpr auto play = TulPlaybackRequest::play;
    constexpr auto pause = TulPlaybackRequest::pause;
    constexpr auto stop = TulPlaybackRequest::stop;
    const struct {
        TulPlaybackFacts facts;
        State state;
        bool started;
    } cases[] = {
        {{}, State::stopped, false},
        {{false, {}, false, BASS_ACTIVE_STOPPED, play}, State::stopped, false},
        {{true, {}, true, BASS_ACTIVE_STALLED, play}, State::connecting, true},
        {{true, {}, true, BASS_ACTIVE_PLAYING, play}, State::connecting, true},
        {{true, {}, false, BASS_ACTIVE_PLAYING, play}, State::playing, true},
        {{true, {}, false, BASS_ACTIVE_STALLED, play}, State::waiting, true},
        {{true, {}, false, BASS_ACTIVE_PLAYING, pause}, State::fadingOut, false},
        {{true, {}, false, BASS_ACTIVE_STALLED, pause}, State::fadingOut, false},
        {{true, {}, false, BASS_ACTIVE_PLAYING, stop}, State::fadingOut, false},
        {{true, {}, false, BASS_ACTIVE_PAUSED, pause}, State::paused, false},
        {{true, {}, true, BASS_ACTIVE_PAUSED, pause}, State::paused, false},
        {{true, {}, false, BASS_ACTIVE_PAUSED, stop}, State::stopped, false},
        {{true, {}, false, BASS_ACTIVE_PAUSED, play}, State::paused, false},
        // Its end has not reached the player yet.
        {{true, {}, false, BASS_ACTIVE_STOPPED, play}, State::playing, true},
        {{true, {}, false, BASS_ACTIVE_STOPPED, pause}, State::paused, false},
        {{true, {}, false, BASS_ACTIVE_STOPPED, stop}, State::stopped, false},
        {{true, timeout, false, BASS_ACTIVE_STOPPED, play}, State::failed, false},
        {{true, timeout, true, BASS_ACTIVE_STALLED, pause}, State::failed, false},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(playbackState(row.facts), row.state) << &row - cases;
        EXPECT_EQ(isStarted(playbackState(row.facts)), row.started) << &row - cases;
    }
}

TEST_F(Player, StartsAnEntryInTheOrderedSteps) {
    player->play();
    EXPECT_FALSE(player->takeSongChanged());
    EXPECT_EQ(state(), State::stopped);

    add({"/x/a.flac", "/x/b.mp3"});
    player->setVolume(0.75F);
    player->setBalance(-0.5F);
    bass.takeCalls();
    player->play();
    EXPECT_EQ(bass.takeCalls(), "StreamFree 0\nFLAC_StreamCreateFile 0 /x/a.flac 0 0 1073741824\nPlay 1 0\n"
                                "SetSync 1 2147483650 0 0\nSetAttribute 1 2 0.75\nSetAttribute 1 3 -0.5\n"
                                "SetNext 1 1 /x/b.mp3\n");
    EXPECT_TRUE(player->isPlaying());
    EXPECT_EQ(player->stream->title, "a");
    EXPECT_TRUE(player->playlist->entryAt(0)->active);
    EXPECT_TRUE(player->takeSongChanged());
    EXPECT_FALSE(player->takeSongChanged());

    player->previous();
    EXPECT_EQ(current(), 1);
    player->next();
    EXPECT_EQ(current(), 0);
    EXPECT_EQ(bass.channels.size(), 1U);
    player->clearPlaylist();
    player->pause();
    bass.endFade();
    bass.last().position = 40;
    player->next(); // of no list: what is there begins again
    EXPECT_EQ(state(), State::playing);
    EXPECT_EQ(bass.last().position, 0U);
    EXPECT_EQ(bass.last().volume, 0.75F);
    player->startCurrentEntry();
    EXPECT_EQ(player->stream, nullptr);
    EXPECT_TRUE(bass.channels.empty());
}

TEST_F(Player, OpensAndPreparesEachKindOfSourceWithItsCall) {
    const struct {
        std::string source;
        std::string call;
        DWORD next;
    } cases[] = {
        {"/a.flac", "FLAC_StreamCreateFile 0 /a.flac 0 0 1073741824", BASS_SOURCE_FLAC},
        {"/a.ape", "APE_StreamCreateFile 0 /a.ape 0 0 1073741824", BASS_SOURCE_APE},
        {"/a.opus", "OPUS_StreamCreateFile 0 /a.opus 0 0 1073741824", BASS_SOURCE_OPUS},
        {"/a.wv", "WV_StreamCreateFile 0 /a.wv 0 0 1073741824", BASS_SOURCE_WV},
        {"/a.FLAC", "StreamCreateFile 0 /a.FLAC 0 0 1073741824", BASS_SOURCE_FILE},
        {"/music.old/track", "StreamCreateFile 0 /music.old/track 0 0 1073741824", BASS_SOURCE_FILE},
        {"/HTTP/a.flac", "FLAC_StreamCreateFile 0 /HTTP/a.flac 0 0 1073741824", BASS_SOURCE_FLAC},
        {"/https/a.flac", "StreamCreateURL 0 /https/a.flac 0 0 0", BASS_SOURCE_URL},
        {"http://h/a.flac", "StreamCreateURL 0 http://h/a.flac 0 0 0", BASS_SOURCE_URL},
        {"HTTP://h/a.flac", "StreamCreateURL 0 HTTP://h/a.flac 0 0 0", BASS_SOURCE_URL},
        {"HttpS://h/a", "StreamCreateURL 0 HttpS://h/a 0 0 0", BASS_SOURCE_URL},
        {"/track", "Play 0 0", BASS_SOURCE_NONE}, // nothing created
        {"", "Play 0 0", BASS_SOURCE_NONE},
    };
    for (const auto& [source, call, next] : cases) {
        TulStream stream;
        bass.calls.clear();
        stream.open(source);
        EXPECT_EQ(bass.calls.at(1), call);
        EXPECT_EQ(stream.isPlaying(), next != BASS_SOURCE_NONE);
        EXPECT_EQ(stream.failure().kind == TulFailure::Kind::notOpened, next == BASS_SOURCE_NONE);
        stream.open("/a.mp3");
        stream.setNext(source);
        EXPECT_EQ(bass.last().next, std::to_string(next) + " " + (next == BASS_SOURCE_NONE ? "-" : source));
    }
}

TEST_F(Player, TellsWhatFollowsWheneverThatChangesAndOnlyThen) {
    const auto move = [this](int from, int to) { player->playlist->moveEntries(from, to); };
    const auto select = [this](int index) { player->playlist->selectEntry(index); };
    const struct {
        std::vector<std::string> list;
        int current;
        std::function<void()> change;
        std::string next;
    } cases[] = {
        {{"/a.mp3", "/b.flac"}, 0, [] {}, "2 /b.flac"},
        {{"/a.mp3", "/b.flac"}, 1, [] {}, "1 /a.mp3"},
        {{"/a.mp3"}, 0, [] {}, "1 /a.mp3"},
        {{"/a.mp3", "/b.flac", "/c.wv"}, 0, [&] { move(2, 1); }, "5 /c.wv"},
        {{"/a.mp3", "/b.flac", "/c.wv"}, 0, [&] { move(0, 2); }, "2 /b.flac"},
        {{"/a.mp3", "/b.flac", "/c.wv"}, 0, [&] { select(1); }, "5 /c.wv"},
        {{"/a.mp3"}, 0, [&] { add({"http://h/live"}); }, "6 http://h/live"},
        {{"/a.mp3", "/b.flac"}, 0, [&] { player->playlist->entries.pop_back(); }, "1 /a.mp3"},
        {{"/a.mp3", "/b.flac"}, 0, [&] { player->clearPlaylist(); }, "0 -"},
        {{"/a.mp3", "/b.flac"}, 0, [&] { player->setPlaylist(std::make_unique<TulPlaylist>()); }, "0 -"},
        {{"/a.mp3", "/b.flac"}, 0, [&] { player->stop(); }, "0 -"},
        {{"/a.mp3", "/b.flac"}, 0, [&] { player->stop(), player->play(); }, "2 /b.flac"},
        {{"/a.mp3", "/b.flac"}, 0, [&] { player->pause(); }, "2 /b.flac"},
        {{"/a.mp3", "/b.flac"}, 0, [&] { player->next(); }, "1 /a.mp3"},
    };
    for (const auto& row : cases) {
        const auto& [list, current, change, next] = row;
        SCOPED_TRACE(&row - cases);
        player->clearPlaylist();
        add(list);
        player->playlist->selectEntry(current);
        player->startCurrentEntry();
        change();
        player->update();
        EXPECT_EQ(bass.last().next, next);
        bass.calls.clear();
        player->update();
        EXPECT_EQ(bass.takeCalls(), "") << "nothing has changed";
    }
}

TEST_F(Player, GoesOnAtTheEndOfATrackOnceAndOnTheMainThread) {
    add({"/a.mp3", "/b.mp3", "/c.mp3"});
    player->playlist->selectEntry(1);
    player->startCurrentEntry();
    fireEnd(1);
    EXPECT_EQ(current(), 1);
    runTasks();
    EXPECT_EQ(current(), 2);
    endTrack();
    EXPECT_EQ(current(), 0);

    // The user was faster: the end of the old stream must not skip another one.
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

TEST_F(Player, WithoutAnExecutorGoesOnWhereTheEndIsHeard) {
    player->setExecutor({});
    add({"/a.mp3", "/b.mp3"});
    player->play();
    fireEnd(1);
    EXPECT_EQ(current(), 1);
}

TEST_F(Player, PausesInEveryState) {
    const struct {
        std::function<void()> bringAbout;
        State pressed; // right after the press
        State later;   // when a fade is over
    } cases[] = {
        {[] {}, State::fadingOut, State::paused},
        {[] { bass.last().state = BASS_ACTIVE_STALLED; }, State::paused, State::paused},
        {[] {
             bass.last().status = BASS_STREAM_CONNECTING;
             bass.last().state = BASS_ACTIVE_STALLED;
         },
         State::paused, State::paused},
        {[this] { player->stop(); }, State::fadingOut, State::stopped},
        {[this] { player->stop(), bass.endFade(); }, State::stopped, State::stopped},
        {[] { bass.fail(BASS_STREAM_LOST); }, State::failed, State::failed},
    };
    add({"/a.mp3", "/b.mp3"});
    for (const auto& [bringAbout, pressed, later] : cases) {
        SCOPED_TRACE(static_cast<int>(later));
        player->startCurrentEntry();
        bringAbout();
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

TEST_F(Player, AStopIsFollowedByThePlaceSoughtOrTheStart) {
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
}

TEST_F(Player, ATrackThatEndsInItsFadeLeavesTheNextOnePausedAtItsStart) {
    add({"/a.mp3", "/b.mp3"});
    player->play();
    player->pause();
    bass.status = BASS_STREAM_CONNECTING;
    endTrack();
    EXPECT_EQ(current(), 1);
    EXPECT_EQ(state(), State::paused);
    EXPECT_EQ(bass.last().state, BASS_ACTIVE_PAUSED);
    EXPECT_TRUE(player->takeSongChanged());
    bass.last().status = BASS_STREAM_OPEN;
    bass.last().volume = 0.01F; // of the fade that it has joined
    player->play();
    EXPECT_EQ(state(), State::playing);
    EXPECT_EQ(bass.last().volume, 0.5F);
    EXPECT_EQ(bass.last().position, 0U);

    player->pause();
    bass.status = BASS_STREAM_NO_AUDIO;
    add({"/c.mp3"});
    bass.last().state = BASS_ACTIVE_STOPPED;
    fireEnd(bass.lastHandle);
    std::exchange(tasks, {}).front()();
    EXPECT_EQ(current(), 2) << "which cannot be played";
    bass.status = BASS_STREAM_OPEN;
    runTasks();
    EXPECT_EQ(current(), 0);
    EXPECT_EQ(state(), State::paused);

    player->play();
    player->stop();
    endTrack();
    EXPECT_EQ(current(), 0) << "a stop stays where it was";
    EXPECT_EQ(state(), State::stopped);
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

TEST_F(Player, AnEntryShowsWhyItDidNotPlayUntilItDoes) {
    using Kind = TulFailure::Kind;
    const std::pair<DWORD, Kind> kinds[] = {
        {BASS_STREAM_NOT_FOUND, Kind::notFound},     {BASS_STREAM_UNREADABLE, Kind::unreadable},
        {BASS_STREAM_NO_AUDIO, Kind::noAudio},       {BASS_STREAM_NO_NAME, Kind::nameNotFound},
        {BASS_STREAM_REFUSED, Kind::refused},        {BASS_STREAM_TIMEOUT, Kind::timeout},
        {BASS_STREAM_HTTP_STATUS, Kind::httpStatus}, {BASS_STREAM_CERTIFICATE, Kind::certificate},
    };
    add({"http://h/a", "/b.mp3"});
    player->play();
    for (const auto& [status, kind] : kinds) {
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

TEST_F(Player, MayBeDestroyedWhileAnEndIsBeingHeard) {
    for (int i = 0; i < 50; ++i) {
        std::atomic<int> heard = 0;
        std::atomic<bool> done = false;
        player = std::make_unique<TulPlayer>();
        player->setExecutor([&heard](const std::function<void()>&) { ++heard; });
        std::thread syncThread([&done] {
            while (!done)
                TulPlayer::onStreamEnded(1, 1, 0, nullptr);
        });
        EXPECT_TRUE(support::waitFor([&heard] { return heard > 0; }));
        player.reset();
        done = true;
        syncThread.join();
    }
}

TEST_F(Player, KeepsThePlaylistWhenAFileIsRejected) {
    const auto path = [](const char* name) { return (support::scratch() / name).string(); };
    support::writeFile(path("a.tuq"), R"({"name":"A","entries":[{"source":"a.mp3"}]})");
    support::writeFile(path("b.tuq"), R"({"name":"B","entries":[]})");
    support::writeFile(path("bad.tuq"), R"({"name":"bad"})");
    player->setStorePath(path("playlists.json"));
    auto& manager = *player->internalPlaylistManager;

    std::string outcomes;
    player->openPlaylist(path("a.tuq"), note(outcomes, 'a'));
    EXPECT_TRUE(player->isPlaying());
    const TulPlaylist* opened = player->playlist.get();
    player->openPlaylist(path("bad.tuq"), note(outcomes, 'x'));
    EXPECT_EQ(player->playlist.get(), opened);
    EXPECT_EQ(manager.count(), 1);

    player->openPlaylist(path("b.tuq"), note(outcomes, 'b')); // an empty one leaves the stream alone
    EXPECT_EQ(outcomes, "a+x-b+");
    EXPECT_EQ(player->playlist->name, "B");
    EXPECT_TRUE(player->isPlaying());
    EXPECT_EQ(manager.currentIndex, 1);

    for (const int nothing : {1, -1, 2})
        player->selectInternalPlaylist(nothing);
    EXPECT_EQ(player->playlist->name, "B");
    support::writeFile(path("a.tuq"), "broken for now");
    player->selectInternalPlaylist(0);
    EXPECT_EQ(player->playlist->name, "B");
    EXPECT_EQ(manager.currentIndex, 1);

    player->playlist->name = "C";
    player->savePlaylist(path("c.m3u")); // not written, but registered
    EXPECT_EQ(manager.playlistAt(2).second, "C");
    TulInternalPlaylistManager stored;
    stored.storePath = path("playlists.json");
    stored.load();
    EXPECT_EQ(stored.playlists, manager.playlists);
}

TEST_F(Player, OpensInTheBackgroundWhatWasAskedForLast) {
    const auto path = [](const std::string& name) { return (support::scratch() / name).string(); };
    for (const std::string name : {"a", "b", "c"}) {
        const std::string entry = R"({"source":")" + name + R"(.mp3","title":"T"})";
        support::writeFile(path(name + ".tuq"), R"({"name":")" + name + R"(","entries":[)" + entry + "]}");
    }
    player->setStorePath(path("late.json"));
    player->workers.setWake([] {});
    const auto deliverUntil = [this](auto condition) {
        return support::waitFor([&] {
            player->workers.deliver();
            return condition();
        });
    };
    std::string outcomes;
    player->openPlaylist(path("a.tuq"), note(outcomes, 'a'));
    EXPECT_EQ(player->playlist->entryCount(), 0) << "a call returns at once";
    player->openPlaylist(path("b.tuq"), note(outcomes, 'b'));
    ASSERT_TRUE(deliverUntil([&] { return player->playlist->name == "b"; }));
    EXPECT_EQ(outcomes, "a0b+");
    EXPECT_TRUE(player->isPlaying());

    player->openPlaylist(path("c.tuq"), note(outcomes, 'c'));
    player->clearPlaylist();
    player->playlist->name = "mine";
    player->savePlaylist(path("mine.tuq"));
    player->playlist->name = "changed later";
    player->selectInternalPlaylist(0, note(outcomes, 's'));
    ASSERT_TRUE(deliverUntil([&] { return outcomes == "a0b+c0s+"; }));
    EXPECT_EQ(player->playlist->name, "b");
    EXPECT_EQ(player->internalPlaylistManager->currentIndex, 0);
    player.reset(); // when what was saved is on the disk
    EXPECT_EQ(support::readFile(path("mine.tuq")), R"({"name":"mine","entries":[]})");
    EXPECT_NE(support::readFile(path("late.json")).find("mine.tuq"), std::string::npos);
}

TEST_F(Player, TellsOfTheEntryThatPlaysWhatIsReadLater) {
    const auto wav = support::writeWav(support::scratch() / "in.wav", support::sine(440, 4410)).string();
    const auto picture = support::scratch() / "cover.png";
    support::run(
        {"ffmpeg", "-y", "-f", "lavfi", "-i", "color=red:s=8x8", "-frames:v", "1", picture.string()});
    std::vector<std::unique_ptr<TulPlaylistEntry>> rows;
    for (const std::string title : {"One", "Two"}) {
        rows.push_back(std::make_unique<TulPlaylistEntry>());
        rows.back()->source = (support::scratch() / (title + ".file.flac")).string();
        support::run({"flac", "-s", "-f", "-T", "TITLE=" + title, "-T", "ARTIST=Band",
                      "--picture=" + picture.string(), "-o", rows.back()->source, wav});
    }
    player->workers.setWake([] {});
    player->appendEntries(std::move(rows));
    player->play();
    EXPECT_EQ(player->stream->title, "One.file") << "at once";
    EXPECT_TRUE(player->takeSongChanged());
    EXPECT_FALSE(player->takeSongInfoChanged());
    EXPECT_TRUE(player->tagReader.isPreparing());
    const auto isKnown = [this] {
        player->workers.deliver();
        return !player->tagReader.isPreparing() && player->tagReader.progress().total == 0;
    };
    ASSERT_TRUE(support::waitFor(isKnown));
    EXPECT_EQ(player->stream->title + player->stream->artist, "OneBand");
    EXPECT_TRUE(player->takeSongInfoChanged());
    EXPECT_FALSE(player->takeSongInfoChanged());
    const TulPlaylistEntry& playing = *player->playlist->entryAt(0);
    EXPECT_EQ(std::string(playing.coverArt.get(), static_cast<std::size_t>(playing.coverArtSize)),
              support::readFile(picture));
    EXPECT_EQ(player->playlist->entryAt(1)->coverArtSize, 0) << "only of what plays";

    player->next();
    EXPECT_EQ(player->stream->title, "Two") << "read meanwhile";
    player->clearPlaylist();
    ASSERT_TRUE(support::waitFor(isKnown));
    EXPECT_EQ(player->stream->title, "Two");
}

TEST_F(Player, ShowsArtistAndAlbumInTurn) {
    TulStream stream;
    stream.artist = "artist";
    stream.album = "album";
    EXPECT_EQ(stream.nextInfoLine() + stream.nextInfoLine() + stream.nextInfoLine(), "artistalbumartist");
    stream.open("/a.mp3");
    EXPECT_EQ(stream.nextInfoLine(), "artist");
    bass.last().position = 8;
    EXPECT_EQ(stream.position(), 1.0);
    EXPECT_EQ(stream.length(), 10.0);
}

TEST_F(Player, DrawsBarsFromThePeakOfEachBand) {
    const std::pair<float, int> heights[] = {
        {0.0F, 2},   {0.0047F, 2}, {0.0049F, 2}, {0.01F, 4}, {0.15F, 24},
        {0.16F, 25}, {1.0F, 25},   {1e30F, 25},  {-1.0F, 2}, {std::numeric_limits<float>::quiet_NaN(), 2},
    };
    TulStream stream;
    EXPECT_EQ(stream.spectrum(), (TulSpectrum{1, 1, 1, 1, 1, 1, 1, 1}));
    stream.open("/a.mp3");
    for (const auto& [peak, height] : heights) {
        bass.magnitudes[100] = peak;
        EXPECT_EQ(stream.spectrum(), (TulSpectrum{2, 2, 2, 2, 2, 2, height, 2})) << peak;
    }
    const int firstBins[] = {1, 2, 3, 6, 14, 33, 77, 182, 431};
    for (std::size_t bin = 0; bin < 512; ++bin) {
        bass.magnitudes.assign(512, 0);
        bass.magnitudes[bin] = 1;
        TulSpectrum expected{2, 2, 2, 2, 2, 2, 2, 2};
        const auto band = std::ranges::upper_bound(firstBins, static_cast<int>(bin)) - std::begin(firstBins);
        if (band > 0 && band <= 8) expected[static_cast<std::size_t>(band) - 1] = 25;
        EXPECT_EQ(stream.spectrum(), expected) << bin;
    }
    bass.dataFails = true;
    EXPECT_EQ(stream.spectrum(), (TulSpectrum{2, 2, 2, 2, 2, 2, 2, 2}));
}

} // namespace
