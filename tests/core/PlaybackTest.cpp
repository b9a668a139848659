#include "core/player/TulPlayer.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <mutex>

namespace {

using support::waitFor;

/// The player on the real audio layer, without a device, with this thread as its main thread.
class Playback : public testing::Test {
protected:
    Playback() {
        setenv("TUL_AUDIO", "null", 1);
        player = std::make_unique<TulPlayer>();
        player->setExecutor([this](std::function<void()> task) {
            const std::lock_guard lock(mutex);
            tasks.push_back(std::move(task));
        });
    }

    static std::string encode(const char* name, double seconds) {
        return support::encode(name, support::sine(1000, static_cast<std::size_t>(seconds * 44100)));
    }

    /// What the main thread's loop does.
    bool runTasks() {
        std::vector<std::function<void()>> taken;
        {
            const std::lock_guard lock(mutex);
            taken.swap(tasks);
        }
        for (const auto& task : taken)
            task();
        return !taken.empty();
    }

    bool plays() {
        return waitFor([this] { return player->playbackState() == TulPlaybackState::playing; });
    }

    std::mutex mutex;
    std::vector<std::function<void()>> tasks; // guarded by mutex
    std::unique_ptr<TulPlayer> player;
};

TEST_F(Playback, ATrackThatEndsDuringItsFadeLeavesTheNextPausedAtItsStart) {
    for (const std::string& source :
         {encode("short.flac", 0.29), std::string("/nowhere/gone.flac"), encode("long.mp3", 60)})
        player->playlist->addEntry(source);
    player->play();
    ASSERT_TRUE(waitFor([this] { return player->stream->position() > 0; }));
    player->pause(); // for longer than the track lasts
    ASSERT_TRUE(waitFor([this] { return runTasks(), player->playlist->currentIndex == 2; }));
    EXPECT_EQ(player->playbackState(), TulPlaybackState::paused);
    EXPECT_EQ(player->playlist->entryAt(1)->failure.kind, TulFailure::Kind::notFound);
    EXPECT_EQ(player->stream->position(), 0.0);
    player->play();
    ASSERT_TRUE(waitFor([this] { return player->stream->position() > 0; }));
    EXPECT_LT(player->stream->position(), 20);
    EXPECT_EQ(player->stream->volume(), 0.5F);
}

TEST_F(Playback, AnInvalidNextSourceClearsThePreviousOne) {
    const std::string former = encode("former.flac", 5);
    TulStream stream;
    stream.open(encode("first.flac", 0.5));
    stream.setNext(former);
    ASSERT_TRUE(waitFor([&] { return stream.position() > 0.1; }));
    stream.setNext("/https/no-address.mp3");
    ASSERT_TRUE(waitFor([&] { return stream.active() == BASS_ACTIVE_STOPPED; }));
    stream.open(former);
    EXPECT_EQ(stream.position(), 0.0) << "it plays already";
}

TEST_F(Playback, PausesAfterTheFadeAndResumesThereAtFullVolume) {
    player->playlist->addEntry(encode("long.flac", 60));
    player->setVolume(0.75F);
    player->play();
    ASSERT_TRUE(plays());
    EXPECT_NEAR(player->stream->length(), 60.0, 1e-9);
    player->stream->seek(30);
    ASSERT_TRUE(waitFor([this] { return player->stream->position() > 30.1; }));
    const TulSpectrum bars = player->stream->spectrum();
    EXPECT_EQ(bars[4], 25); // 1 kHz, loud
    EXPECT_EQ(bars[7], 2);
    player->pause();
    ASSERT_TRUE(waitFor([this] { return player->playbackState() == TulPlaybackState::paused; }));
    const double paused = player->stream->position();
    EXPECT_GT(paused, 30.3);
    player->play();
    ASSERT_TRUE(plays());
    EXPECT_EQ(player->stream->volume(), 0.75F);
    EXPECT_TRUE(waitFor([&] { return player->stream->position() > paused + 0.1; }));
    // Destroyed while it plays.
    player.reset();
}

} // namespace
