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

/// A player on the recording library, with the tasks that its executor was given.
class Player : public testing::Test {
protected:
    Player() {
        bass = {};
        player = std::make_unique<TulPlayer>();
        player->setExecutor([this](std::function<void()> task) { tasks.push_back(std::move(task)); });
    }

    void add(const std::vector<std::string>& sources) { player->playlist->addEntries(sources); }

    void endTrack(HSTREAM handle) {
        std::thread([this, handle] { bass.endSync(1, handle, 0, nullptr); }).join();
    }

    void runTasks() {
        for (const auto& task : std::exchange(tasks, {}))
            task();
    }

    std::vector<std::function<void()>> tasks;
    std::unique_ptr<TulPlayer> player;
};

TEST_F(Player, StartsAnEntryInTheOrderedSteps) {
    EXPECT_EQ(bass.takeCalls(), "Init -1 44100 0 0 0\n");
    player->play();
    EXPECT_EQ(bass.takeCalls(), "");
    EXPECT_FALSE(player->takeSongChanged());

    add({"/x/a.flac", "/x/b.mp3"});
    player->setVolume(0.75F);
    player->setBalance(-0.5F);
    player->play();
    EXPECT_EQ(bass.takeCalls(), "StreamFree 0\nFLAC_StreamCreateFile 0 /x/a.flac 0 0 1073741824\nPlay 1 0\n"
                                "SetSync 1 2147483650 0 0\nSetAttribute 1 2 0.75\nSetAttribute 1 3 -0.5\n");
    EXPECT_TRUE(player->isPlaying());
    EXPECT_EQ(player->stream->title, "a");
    EXPECT_TRUE(player->playlist->entryAt(0)->active);
    EXPECT_TRUE(player->takeSongChanged());
    EXPECT_FALSE(player->takeSongChanged());

    player->pause();
    EXPECT_FALSE(player->isPlaying()); // it fades
    TulStream::pause(1, 1, 0, nullptr);
    player->play();
    EXPECT_EQ(bass.takeCalls(),
              "Slide 1 2 0 300\nSetSync 1 5 0 0\nPause 1\nSetAttribute 1 2 0.75\nPlay 1 0\n");
    player->previous();
    EXPECT_EQ(player->playlist->currentIndex, 1);
    player->next();
    EXPECT_EQ(player->playlist->currentIndex, 0);
    EXPECT_EQ(bass.channels.size(), 1U);

    player->clearPlaylist();
    player->pause();
    bass.takeCalls();
    player->next();
    EXPECT_EQ(bass.takeCalls(), "SetPosition 3 0 0\n"); // still fading: it plays
    player->startCurrentEntry();
    EXPECT_EQ(player->stream, nullptr);
    EXPECT_TRUE(bass.channels.empty());
}

TEST_F(Player, OpensEachKindOfSourceWithItsCall) {
    const std::pair<std::string, std::string> cases[] = {
        {"/a.flac", "FLAC_StreamCreateFile 0 /a.flac 0 0 1073741824"},
        {"/a.ape", "APE_StreamCreateFile 0 /a.ape 0 0 1073741824"},
        {"/a.opus", "OPUS_StreamCreateFile 0 /a.opus 0 0 1073741824"},
        {"/a.wv", "WV_StreamCreateFile 0 /a.wv 0 0 1073741824"},
        {"/a.FLAC", "StreamCreateFile 0 /a.FLAC 0 0 1073741824"},
        {"/music.old/track", "StreamCreateFile 0 /music.old/track 0 0 1073741824"},
        {"/https/a.flac", "StreamCreateURL 0 /https/a.flac 0 0 0"},
        {"http://h/a.flac", "StreamCreateURL 0 http://h/a.flac 0 0 0"},
        {"/track", "Play 0 0"}, // nothing created
        {"", "Play 0 0"},
    };
    for (const auto& [source, call] : cases) {
        TulStream stream;
        bass.calls.clear();
        stream.open(source);
        EXPECT_EQ(bass.calls.at(1), call);
        EXPECT_EQ(stream.isPlaying(), call != "Play 0 0");
    }
}

TEST_F(Player, GoesOnAtTheEndOfATrackOnceAndOnTheMainThread) {
    add({"/a.mp3", "/b.mp3", "/c.mp3"});
    player->playlist->selectEntry(1);
    player->startCurrentEntry();
    endTrack(1);
    EXPECT_EQ(player->playlist->currentIndex, 1);
    runTasks();
    EXPECT_EQ(player->playlist->currentIndex, 2);
    endTrack(2);
    runTasks();
    EXPECT_EQ(player->playlist->currentIndex, 0);

    // The user was faster: the end of the old stream must not skip another one.
    endTrack(3);
    player->next();
    runTasks();
    EXPECT_EQ(player->playlist->currentIndex, 1);
    // The same with the same entry started again.
    endTrack(4);
    player->startCurrentEntry();
    runTasks();
    EXPECT_EQ(player->playlist->currentIndex, 1);

    player->clearPlaylist();
    bass.channels[5].state = BASS_ACTIVE_STOPPED;
    bass.takeCalls();
    endTrack(5);
    runTasks();
    EXPECT_EQ(bass.takeCalls(), "SetPosition 5 0 0\n");
    player->play();
    EXPECT_EQ(bass.takeCalls(), "SetAttribute 5 2 0.5\nPlay 5 0\n");

    endTrack(5);
    player.reset();
    EXPECT_TRUE(bass.channels.empty());
    runTasks();
    endTrack(5);
    EXPECT_TRUE(tasks.empty());
}

TEST_F(Player, WithoutAnExecutorGoesOnWhereTheEndIsHeard) {
    player->setExecutor({});
    add({"/a.mp3", "/b.mp3"});
    player->play();
    endTrack(1);
    EXPECT_EQ(player->playlist->currentIndex, 1);
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

TEST_F(Player, StaysOnASourceThatCannotBeOpened) {
    bass.opens = false;
    add({"/a.mp3", "/b.mp3"});
    player->play();
    EXPECT_NE(player->stream, nullptr);
    EXPECT_FALSE(player->isPlaying());
    EXPECT_LT(player->stream->position(), 0);
    EXPECT_LT(player->stream->length(), 0);
    EXPECT_TRUE(player->playlist->entryAt(0)->active);
    EXPECT_TRUE(player->takeSongChanged());
}

TEST_F(Player, KeepsThePlaylistWhenAFileIsRejected) {
    const auto path = [](const char* name) { return (support::scratch() / name).string(); };
    support::writeFile(path("a.tuq"), R"({"name":"A","entries":[{"source":"a.mp3"}]})");
    support::writeFile(path("b.tuq"), R"({"name":"B","entries":[]})");
    support::writeFile(path("bad.tuq"), R"({"name":"bad"})");
    player->setStorePath(path("playlists.json"));
    auto& manager = *player->internalPlaylistManager;

    EXPECT_TRUE(player->openPlaylist(path("a.tuq")));
    EXPECT_TRUE(player->isPlaying());
    const TulPlaylist* opened = player->playlist.get();
    EXPECT_FALSE(player->openPlaylist(path("bad.tuq")));
    EXPECT_EQ(player->playlist.get(), opened);
    EXPECT_EQ(manager.count(), 1);

    EXPECT_TRUE(player->openPlaylist(path("b.tuq"))); // an empty one leaves the stream alone
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

TEST_F(Player, ShowsArtistAndAlbumInTurn) {
    TulStream stream;
    stream.artist = "artist";
    stream.album = "album";
    EXPECT_EQ(stream.nextInfoLine() + stream.nextInfoLine() + stream.nextInfoLine(), "artistalbumartist");
    stream.open("/a.mp3");
    EXPECT_EQ(stream.nextInfoLine(), "artist");
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
