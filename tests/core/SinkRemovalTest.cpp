// What the player does when the sink that it plays to goes: with a real sound server. Each case needs a
// process of its own, as CTest gives it.

#include "core/player/TulPlayer.h"
#include "tests/bass/LibraryEnd.h"
#include "tests/support/Media.h"
#include "tests/support/SoundServer.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <mutex>
#include <sstream>

namespace {

using namespace std::chrono_literals;
using support::waitFor;

class SinkRemoval : public testing::Test {
protected:
    SinkRemoval() {
        unsetenv("TUL_AUDIO");
        player.setExecutor([this](std::function<void()> task) {
            const std::lock_guard lock(mutex);
            tasks.push_back(std::move(task));
        });
        headphones = server.addSink("headphones");
        server.control({"set-default-sink", "headphones"});
        player.playlist->addEntry(support::encode("long.flac", support::noise(60 * 44100)));
        player.play();
    }
    ~SinkRemoval() override { player.shutDown(); }

    void runTasks() {
        std::vector<std::function<void()>> taken;
        {
            const std::lock_guard lock(mutex);
            taken.swap(tasks);
        }
        for (const auto& task : taken)
            task();
        player.update();
    }
    /// As the main thread's loop.
    template <typename Condition>
    bool comes(const Condition& condition, std::chrono::milliseconds limit = 30s) {
        return waitFor([&] { return runTasks(), condition(); }, limit);
    }
    bool isOn(const std::string& sink) {
        const std::string sinks = server.control({"list", "short", "sinks"});
        const std::string streams = server.control({"list", "short", "sink-inputs"});
        std::istringstream lines(sinks);
        for (std::string index, name, rest; lines >> index >> name && std::getline(lines, rest);)
            if (name == sink) return streams.find("\t" + index + "\t") != std::string::npos;
        return false;
    }
    bool playsOn(const std::string& sink) {
        const double begin = player.stream->position();
        return comes([&] { return isOn(sink) && player.stream->position() > begin + 0.3; });
    }
    bool pauses() {
        return comes([&] { return player.playbackState() == TulPlaybackState::paused; }, 3s);
    }

    support::SoundServer server;
    std::string headphones; ///< The module of that sink.
    std::mutex mutex;
    std::vector<std::function<void()>> tasks; ///< Guarded by `mutex`.
    TulPlayer player;
};

TEST_F(SinkRemoval, PausesWhereItStoodAndGoesOnFromThere) {
    ASSERT_TRUE(playsOn("headphones"));
    const double before = player.stream->position();
    server.control({"unload-module", headphones});
    ASSERT_TRUE(pauses());
    const double paused = player.stream->position();
    EXPECT_NEAR(paused, before, 0.5);
    EXPECT_TRUE(comes([&] { return server.playingStreams() == 0; }));
    EXPECT_EQ(player.stream->position(), paused);
    EXPECT_EQ(player.request(), TulPlaybackRequest::pause);
    player.play();
    EXPECT_TRUE(playsOn("null"));
}

TEST_F(SinkRemoval, PlaysOnElsewhereWhereThatIsWanted) {
    player.pausesWhenSinkIsRemoved = false;
    ASSERT_TRUE(playsOn("headphones"));
    server.control({"unload-module", headphones});
    EXPECT_TRUE(playsOn("null"));
    EXPECT_FALSE(pauses());
}

TEST_F(SinkRemoval, AChangeOfTheSinkByTheUserIsNone) {
    ASSERT_TRUE(playsOn("headphones"));
    const std::string other = server.addSink("other");
    server.control({"set-default-sink", "other"});
    ASSERT_TRUE(playsOn("other"));
    EXPECT_FALSE(pauses());
    server.control({"unload-module", headphones}); // left long ago
    EXPECT_FALSE(pauses());
    server.control({"unload-module", other});
    EXPECT_TRUE(pauses());
}

TEST_F(SinkRemoval, WithTheOnlySinkPausesToo) {
    ASSERT_TRUE(playsOn("headphones"));
    server.control({"unload-module", "module-null-sink"}); // both
    EXPECT_TRUE(pauses());
    server.addSink("again");
    player.play();
    EXPECT_TRUE(playsOn("again"));
}

} // namespace
