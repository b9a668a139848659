#include "platform/bass/source/Source.h"

#include "tests/bass/Sounds.h"
#include "tests/support/HttpServer.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using bass::ReadResult;
using support::HttpServer;
using Client = HttpServer::Client;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::int64_t frames = 400'000;

const std::vector<std::int16_t>& sound() {
    static const std::vector<std::int16_t> samples = sounds::sweep(frames);
    return samples;
}

const std::string& flac() {
    static const std::string bytes = support::readFile(support::encode("net.flac", sound()));
    return bytes;
}

const std::string& ogg() {
    static const std::string bytes = support::readFile(support::encode("net.ogg", sound()));
    return bytes;
}

const std::string liveHead = "HTTP/1.0 200 OK\r\nContent-Type: application/ogg\r\nicy-name: test\r\n\r\n";

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

TEST(Network, PlaysAndSeeksInAFiniteFile) {
    HttpServer server([](Client& client) { HttpServer::sendFile(client, flac()); });
    const auto source = bass::openUrl(' ' + server.url("/a.flac") + "\r\n"); // as it is copied
    ASSERT_TRUE(source);
    EXPECT_EQ(source->lengthFrames(), frames);
    const std::vector<float> played = sounds::exactly(sound());
    for (const std::size_t target : {350'000UL, 1000UL}) {
        ASSERT_TRUE(source->seek(static_cast<std::int64_t>(target)));
        const sounds::Decoded part = sounds::read(*source, 2000);
        ASSERT_EQ(part.frames(), 2000);
        EXPECT_TRUE(std::equal(part.samples.begin(), part.samples.end(), &played[target * 2]));
    }
    ASSERT_TRUE(source->seek(0));
    const sounds::Decoded all = sounds::read(*source);
    EXPECT_EQ(all.status, ReadResult::Status::end);
    EXPECT_TRUE(all.samples == played);
}

TEST(Network, ResumesADroppedFileWhereItBrokeOff) {
    HttpServer server([](Client& client) { HttpServer::sendFile(client, flac(), flac().size() / 3); });
    const auto source = bass::openUrl(server.url());
    ASSERT_TRUE(source);
    const sounds::Decoded all = sounds::read(*source);
    EXPECT_EQ(all.status, ReadResult::Status::end);
    EXPECT_TRUE(all.samples == sounds::exactly(sound()));
    EXPECT_GE(server.requestCount(), 3);
}

TEST(Network, StripsIcyMetadataAndGoesOnAfterADrop) {
    // Every 8000 bytes a block of 16 bytes of metadata, and a drop after each run of the file.
    HttpServer server([](Client& client) {
        client.send("ICY 200 OK\r\nicy-name: test\r\nicy-metaint: 8000\r\n\r\n");
        for (std::size_t at = 0; at < ogg().size(); at += 8000) {
            const std::string block = ogg().substr(at, 8000);
            if (!client.send(block)) return;
            if (block.size() == 8000 && !client.send("\x01StreamTitle='';\0")) return;
            if (block.size() == 8000 && !client.send(std::string_view("\0", 1))) return;
        }
    });
    const auto source = bass::openUrl(server.url());
    ASSERT_TRUE(source);
    EXPECT_FALSE(source->lengthFrames());
    EXPECT_FALSE(source->seek(0));
    const sounds::Decoded twice = sounds::read(*source, 2 * frames);
    ASSERT_EQ(twice.frames(), 2 * frames);
    const std::vector<float> played = sounds::exactly(sound());
    EXPECT_GT(sounds::correlation(played, twice.samples, 0), 0.97);
    EXPECT_GT(sounds::correlation(played, std::span(twice.samples).subspan(frames * 2), 0), 0.97);
}

TEST(Network, PlaysTheLinksOfAChainedStreamInTurn) {
    // Noise leaves the decoder far from where the next link starts.
    const auto opus = support::encode("noise.opus", support::noise(frames));
    for (const std::string& link : {ogg(), support::readFile(opus)}) {
        HttpServer server([&](Client& client) {
            client.send(liveHead + link + link);
            client.stall();
        });
        const auto source = bass::openUrl(server.url());
        ASSERT_TRUE(source);
        const sounds::Decoded twice = sounds::read(*source, 2 * frames - 5000);
        EXPECT_EQ(twice.frames(), 2 * frames - 5000);
        const auto [first, both] =
            std::pair(std::span(twice.samples).first(frames), std::span(twice.samples));
        EXPECT_LT(std::ranges::max(both), 1.5F * std::ranges::max(first));
        EXPECT_EQ(server.requestCount(), 1);
    }
}

TEST(Network, ReadsDoNotWaitForAStalledServer) {
    std::atomic<bool> resumed = false;
    HttpServer server([&](Client& client) {
        client.send(liveHead + ogg().substr(0, ogg().size() / 2));
        static_cast<void>(support::waitFor([&] { return resumed.load(); }));
        client.send(ogg().substr(ogg().size() / 2));
        client.stall();
    });
    const auto source = bass::openUrl(server.url());
    ASSERT_TRUE(source);
    std::vector<float> block(2 * 4096);
    ReadResult result;
    std::int64_t heard = 0;
    do {
        const auto start = Clock::now();
        result = source->read(block);
        heard += static_cast<std::int64_t>(result.frames);
        EXPECT_LT(secondsSince(start), 1.0); // 100 ms by the contract, and a loaded machine
    } while (result.status == ReadResult::Status::more);
    EXPECT_EQ(result.status, ReadResult::Status::starved);
    resumed = true;
    heard += sounds::read(*source, frames - heard - 5000).frames();
    EXPECT_GE(heard, frames - 5000);

    std::thread interrupter([&] { source->interrupt(); });
    EXPECT_EQ(sounds::read(*source).status, ReadResult::Status::failed);
    interrupter.join();
}

TEST(Network, FollowsRedirectsWithinHttpOnly) {
    const auto wav = support::writeWav(support::scratch() / "secret.wav", sound());
    std::string target;
    HttpServer server([&](Client& client) {
        if (client.request.starts_with("GET /sound")) return HttpServer::sendFile(client, flac());
        if (client.request.starts_with("GET /loop")) target = "/loop";
        client.send("HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: " + target + "\r\n\r\n");
    });
    for (const std::string& good : {server.url("/sound"), std::string("/sound")}) {
        target = good;
        EXPECT_TRUE(bass::openUrl(server.url())) << target;
    }
    for (const std::string& bad : {"file://" + wav.string(), wav.string(), "concat:" + wav.string(),
                                   std::string("gopher://127.0.0.1/"), std::string("/loop")}) {
        target = bad;
        EXPECT_FALSE(bass::openUrl(server.url())) << target;
    }
}

TEST(Network, NeverReachesALocalFile) {
    const auto wav = support::writeWav(support::scratch() / "local.wav", sound());
    const std::string list =
        "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nfile://" + wav.string() + "\n#EXT-X-ENDLIST\n";
    HttpServer server([&](Client& client) { HttpServer::sendFile(client, list); });
    EXPECT_FALSE(bass::openUrl(server.url("/list.m3u8")));
    for (const std::string& url : {wav.string(), "file://" + wav.string(), "concat:http://x|" + wav.string(),
                                   std::string("ftp://127.0.0.1/http"), std::string("http:"), std::string()})
        EXPECT_FALSE(bass::openUrl(url)) << url;
}

TEST(Network, GivesUpOnASilentServerAfterFiveSecondsAndAtOnceOnWhatIsNoSound) {
    const std::string missing = "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n";
    const struct {
        std::string sent;
        bool stalls;
    } cases[] = {
        {"", true}, {liveHead, true}, {missing, false}, {std::string(5000, 'x'), false}, {"", false}};
    for (const auto& [sent, stalls] : cases) {
        SCOPED_TRACE(sent);
        HttpServer server([&](Client& client) {
            client.send(sent);
            if (stalls) client.stall();
        });
        const auto start = Clock::now();
        EXPECT_FALSE(bass::openUrl(server.url()));
        EXPECT_GE(secondsSince(start), stalls ? 4.0 : 0.0);
        EXPECT_LT(secondsSince(start), stalls ? 7.0 : 4.0);
    }
}

} // namespace
