#include "core/player/TulNetworkSharing.h"
#include "core/player/TulPlayer.h"
#include "tests/bass/LibraryEnd.h"
#include "tests/bass/Listener.h"
#include "tests/bass/Sounds.h"
#include "tests/support/HttpServer.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <ogg/ogg.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <future>
#include <gtest/gtest.h>
#include <list>
#include <mutex>
#include <regex>

namespace {

using support::waitFor;
using namespace std::chrono_literals;

constexpr int listenerCount = 200;
constexpr std::size_t rate = 44100;

/// A port that nothing listens at.
int freePort() {
    return support::HttpServer([](auto& client) { client.stall(); }).port();
}

/// Icecast as docs/SHARING.md configures it, but for the ports, the player's host, and its folders.
class Relay {
public:
    Relay(int playerPort, int port) {
        const auto folder = support::scratch() / "icecast";
        std::filesystem::create_directories(folder);
        std::filesystem::permissions(folder, std::filesystem::perms::all); // it does not run as root
        std::filesystem::permissions(support::scratch(), std::filesystem::perms::all);
        std::string config = support::readFile(TUL_RELAY_CONFIGURATION);
        const auto set = [&](const char* from, const std::string& to) {
            const auto replaced = std::regex_replace(config, std::regex(from), to);
            EXPECT_NE(replaced, config) << from;
            config = replaced;
        };
        set("<port>9090<", "<port>" + std::to_string(playerPort) + "<");
        set("<port>8000<", "<port>" + std::to_string(port) + "<");
        set("player\\.example", "127.0.0.1");
        set("/var/log/icecast2", folder);
        if (geteuid() == 0)
            set("</chroot>", "</chroot><changeowner><user>nobody</user><group>nogroup</group></changeowner>");
        support::writeFile(folder / "relay.xml", config);
        m_server = support::Child({"icecast2", "-c", folder / "relay.xml"}, folder / "output");
    }

private:
    support::Child m_server;
};

struct Pages {
    int count = 0;
    bool complete = true; ///< Every page whole, and none missing behind the header pages.
};

Pages pagesOf(const std::string& stream) {
    ogg_sync_state sync;
    ogg_sync_init(&sync);
    std::memcpy(ogg_sync_buffer(&sync, static_cast<long>(stream.size())), stream.data(), stream.size());
    ogg_sync_wrote(&sync, static_cast<long>(stream.size()));
    Pages pages;
    ogg_page page;
    long expected = -1;
    for (int found = 0; (found = ogg_sync_pageout(&sync, &page)) != 0;) {
        if (found < 0) {
            pages.complete = false;
            continue;
        }
        ++pages.count;
        if (ogg_page_granulepos(&page) == 0) continue; // a header page
        if (expected >= 0 && ogg_page_pageno(&page) != expected) pages.complete = false;
        expected = ogg_page_pageno(&page) + 1;
    }
    ogg_sync_clear(&sync);
    return pages;
}

/// The quietest tenth of a second, but for the first, of which a listener who joins gets a part.
double quietest(const std::vector<float>& samples) {
    const std::size_t window = rate / 10 * 2;
    double least = 1;
    for (std::size_t at = window; at + window <= samples.size(); at += window) {
        double squares = 0;
        for (std::size_t i = at; i < at + window; ++i)
            squares += double(samples[i]) * samples[i];
        least = std::min(least, std::sqrt(squares / static_cast<double>(window)));
    }
    return least;
}

TEST(Relay, AnIcecastServerSendsWhatOneConnectionGetsToManyListeners) {
    setenv("TUL_AUDIO", "null", 1);
    TulPlayer player;
    for (const char* name : {"first.flac", "second.mp3"})
        player.playlist->addEntry(support::encode(name, support::sine(440, 8 * rate)));
    player.setRepeat(TulRepeat::list);
    std::mutex mutex;
    std::vector<std::function<void()>> tasks; // guarded by mutex
    player.setExecutor([&](std::function<void()> task) {
        const std::lock_guard lock(mutex);
        tasks.push_back(std::move(task));
    });
    const auto turn = [&] {
        std::vector<std::function<void()>> taken;
        {
            const std::lock_guard lock(mutex);
            taken.swap(tasks);
        }
        for (const auto& task : taken)
            task();
        player.update();
    };
    TulNetworkSharing& sharing = *player.networkSharing;
    EXPECT_FALSE(sharing.configure("The kitchen", static_cast<std::uint16_t>(freePort())));
    player.networkSharingEnabled = true;
    player.play();
    ASSERT_NE(sharing.port, 0U);

    const int port = freePort();
    const Relay relay(static_cast<int>(sharing.port), port);
    ASSERT_TRUE(waitFor([&] { return turn(), sharing.listenerCount() == 1; }, 30s));
    const std::string request = "GET /tulplayer.ogg HTTP/1.1\r\nHost: localhost\r\n\r\n";
    std::list<Listener> listeners;
    ASSERT_TRUE(waitFor(
        [&] {
            turn();
            listeners.clear(); // refused until the relay has the first pages
            const Listener& first = listeners.emplace_back(port, request);
            return waitFor([&] { return !first.body().empty() || first.isClosed(); }, 1s) &&
                   !first.isClosed();
        },
        30s));
    // Icecast takes few connections at a time, and the others wait for it: not on the player's main thread.
    auto connecting = std::async(std::launch::async, [&] {
        while (listeners.size() < listenerCount)
            listeners.emplace_back(port, request);
    });
    ASSERT_TRUE(waitFor([&] { return turn(), connecting.wait_for(0s) == std::future_status::ready; }, 60s));
    const auto heard = [](const Listener& listener) { return listener.body().size() > 8 * 20000; };
    EXPECT_TRUE(waitFor([&] { return turn(), std::ranges::all_of(listeners, heard); }, 60s));
    EXPECT_EQ(sharing.listenerCount(), 1U);

    for (const Listener& listener : listeners) {
        EXPECT_FALSE(listener.isClosed());
        const std::string stream = listener.body();
        const Pages pages = pagesOf(stream);
        EXPECT_GT(pages.count, 8);
        EXPECT_TRUE(pages.complete);
        support::writeFile(support::scratch() / "heard.ogg", stream);
        const auto source = sounds::open(support::scratch() / "heard.ogg");
        ASSERT_NE(source, nullptr);
        const std::vector<float> samples = sounds::read(*source).samples;
        EXPECT_GT(samples.size(), 6 * rate * 2);
        EXPECT_NEAR(quietest(samples), 0.5 / std::sqrt(2), 0.05);
    }
    const std::string head = listeners.front().received();
    for (const char* field : {"Content-Type: audio/ogg", "icy-name:The kitchen"})
        EXPECT_NE(head.find(field), std::string::npos) << head.substr(0, 600);
}

} // namespace
