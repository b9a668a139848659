#include "platform/bass/source/NetworkLimits.h"

#include "tests/bass/Sounds.h"
#include "tests/support/HttpServer.h"
#include "tests/support/Media.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <map>
#include <utility>
#include <vector>

namespace {

using bass::Failure;
using bass::ReadResult;
using support::HttpServer;
using Client = HttpServer::Client;
using Clock = std::chrono::steady_clock;
using Status = ReadResult::Status;
using namespace std::chrono_literals;

constexpr std::int64_t frames = 400'000;

const std::vector<std::int16_t>& sound() {
    static const std::vector<std::int16_t> samples = sounds::sweep(frames);
    return samples;
}

const std::string& encoded(const std::string& format) {
    static std::map<std::string, std::string> files;
    std::string& bytes = files[format];
    if (bytes.empty()) bytes = support::readFile(support::encode("net." + format, sound()));
    return bytes;
}

const std::string& flac() {
    return encoded("flac");
}

const std::string& ogg() {
    return encoded("ogg");
}

const std::string liveHead = "HTTP/1.0 200 OK\r\nContent-Type: application/ogg\r\nicy-name: test\r\n\r\n";

/// Short timeouts, for fast tests.
constexpr bass::NetworkLimits quick{
    .connect = 1s, .opening = 2s, .silence = 1s, .resume = 400ms, .firstPause = 20ms, .maxPause = 80ms};

std::unique_ptr<bass::Source> open(const std::string& url, const bass::NetworkLimits& limits = {}) {
    return bass::openUrl(url, std::make_shared<bass::Cancel>(), limits).source;
}

void expectSound(bass::Source& source, std::int64_t from, std::int64_t count) {
    static const std::vector<float> played = sounds::exactly(sound());
    const sounds::Decoded part = sounds::read(source, count);
    ASSERT_EQ(part.frames(), count);
    EXPECT_TRUE(std::equal(part.samples.begin(), part.samples.end(), played.begin() + from * 2));
}

TEST(Network, PlaysAndSeeksInAFiniteFile) {
    HttpServer server([](Client& client) { HttpServer::sendFile(client, flac()); });
    const auto source = open(" HTTP" + server.url("/a.flac").substr(4) + "\r\n"); // as it is copied
    ASSERT_TRUE(source);
    EXPECT_EQ(source->lengthFrames(), frames);
    for (const std::int64_t target : {350'000, 1000, 0}) {
        ASSERT_TRUE(source->seek(target));
        expectSound(*source, target, 2000);
    }
    expectSound(*source, 2000, frames - 2000);
    EXPECT_EQ(sounds::read(*source).status, Status::end);
}

TEST(Network, ResumesAFileAfterALostConnection) {
    HttpServer server([](Client& client) { HttpServer::sendFile(client, flac(), flac().size() / 3); });
    const auto source = open(server.url());
    ASSERT_TRUE(source);
    expectSound(*source, 0, frames);
    EXPECT_EQ(sounds::read(*source).status, Status::end);
    EXPECT_GE(server.requestCount(), 3);
}

TEST(Network, GivesUpAServerThatSendsNoByte) {
    HttpServer server([file = flac()](Client& client) { // encoded before it is asked for
        HttpServer::sendFile(client, file, client.rangeStart() == 0 ? file.size() / 3 : 0);
    });
    const auto source = open(server.url(), quick);
    ASSERT_TRUE(source);
    const auto start = Clock::now();
    const sounds::Decoded all = sounds::read(*source);
    EXPECT_EQ(all.status, Status::failed);
    EXPECT_GT(all.frames(), frames / 4);
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_LT(server.requestCount(), 20); // 20, 40, 80, 80, ... ms apart
}

TEST(Network, PlaysOnAfterTheServerRefusedASeek) {
    const std::string whole =
        "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(flac().size()) + "\r\n\r\n" + flac();
    for (const std::string& refusal : {std::string("HTTP/1.1 416 No\r\nContent-Length: 0\r\n\r\n"), whole}) {
        HttpServer server([&](Client& client) {
            if (client.rangeStart() == 0) return HttpServer::sendFile(client, flac());
            client.send(refusal);
        });
        const auto source = open(server.url());
        ASSERT_TRUE(source);
        expectSound(*source, 0, 5000);
        const auto start = Clock::now();
        const bool reached = source->seek(300'000);
        expectSound(*source, reached ? 300'000 : 5000, 5000);
        EXPECT_LT(Clock::now() - start, 10s); // a minute, when it is asked for again and again
    }
}

TEST(Network, StripsIcyMetadataAndReconnects) {
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
    const auto source = open(server.url());
    ASSERT_TRUE(source);
    EXPECT_FALSE(source->lengthFrames());
    EXPECT_FALSE(source->seek(0));
    const sounds::Decoded twice = sounds::read(*source, 2 * frames);
    ASSERT_EQ(twice.frames(), 2 * frames);
    const std::vector<float> played = sounds::exactly(sound());
    EXPECT_GT(sounds::correlation(played, twice.samples, 0), 0.97);
    EXPECT_GT(sounds::correlation(played, std::span(twice.samples).subspan(frames * 2), 0), 0.97);
}

/// The tags of a source and the frames at which they change, up to `count` frames.
std::vector<std::pair<std::int64_t, bass::StreamTags>> tagsOf(bass::Source& source, std::int64_t count) {
    std::vector<std::pair<std::int64_t, bass::StreamTags>> said;
    std::array<float, 256 * bass::channelCount> part;
    for (std::int64_t frame = 0; frame < count;) {
        const ReadResult result = source.read(part);
        if (const auto tags = source.takeTags()) said.emplace_back(frame, *tags);
        if (result.status != Status::more) break;
        frame += static_cast<std::int64_t>(result.frames);
    }
    return said;
}

TEST(Network, ReportsIcyTitlesAtTheirFrames) {
    const std::string wav = support::readFile(support::writeWav(support::scratch() / "radio.wav", sound()));
    constexpr std::size_t interval = 200'000; // bytes: 50,000 frames
    HttpServer server([&](Client& client) {
        HttpServer::sendRadio(client, "Station", wav, interval,
                              {"StreamTitle='One';", "", "StreamTitle='Two';", "StreamTitle='Two';"});
        client.stall();
    });
    const auto source = open(server.url());
    ASSERT_TRUE(source);
    const auto said = tagsOf(*source, frames - 5000);
    ASSERT_EQ(said.size(), 3U);
    EXPECT_EQ(said[0].first, 0);
    EXPECT_NE(said[0].second.headers.find("icy-name: Station"), std::string::npos);
    EXPECT_EQ(said[0].second.metadata, "");
    EXPECT_EQ(said[1].second.metadata, "StreamTitle='One';");
    EXPECT_NEAR(static_cast<double>(said[1].first), 50'000, 1100);
    EXPECT_EQ(said[2].second.metadata, "StreamTitle='Two';");
    EXPECT_NEAR(static_cast<double>(said[2].first), 150'000, 1100);
}

TEST(Network, ReportsTheCommentsOfEachLinkOfAChainedStream) {
    constexpr std::int64_t linkFrames = 100'000;
    const std::span<const std::int16_t> part = std::span(sound()).first(linkFrames * 2);
    const std::vector<std::vector<std::string>> encoders = {
        {"oggenc", "-Q", "-t", "TITLE", "-a", "Band", "-o", "OUT", "IN"},
        {"opusenc", "--quiet", "--title", "TITLE", "--artist", "Band", "IN", "OUT"},
        {"flac", "-s", "-f", "--ogg", "--serial-number=SERIAL", "-T", "TITLE=TITLE", "-T", "ARTIST=Band",
         "-o", "OUT", "IN"}};
    for (const auto& encoder : encoders) {
        SCOPED_TRACE(encoder[0]);
        std::string stream;
        for (const std::string title : {"First", "Second"}) {
            auto command = encoder;
            std::ranges::replace(command, "TITLE", title);
            std::ranges::replace(command, "TITLE=TITLE", "TITLE=" + title);
            std::ranges::replace(command, "--serial-number=SERIAL",
                                 "--serial-number=" + std::to_string(title.size()));
            stream += support::readFile(support::encode("link.ogg", part, 44100, 2, command));
        }
        HttpServer server([&](Client& client) {
            client.send(liveHead + stream);
            client.stall();
        });
        const auto source = open(server.url());
        ASSERT_TRUE(source);
        const auto said = tagsOf(*source, 2 * linkFrames - 5000);
        ASSERT_EQ(said.size(), 2U);
        EXPECT_EQ(said[0].first, 0);
        EXPECT_NE(said[0].second.comments.find(std::string("TITLE=First\0", 12)), std::string::npos);
        EXPECT_NE(said[1].second.comments.find(std::string("TITLE=Second\0", 13)), std::string::npos);
        EXPECT_NE(said[1].second.comments.find(std::string("ARTIST=Band\0", 12)), std::string::npos);
        EXPECT_NEAR(static_cast<double>(said[1].first), linkFrames, 4500);
    }
}

TEST(Network, OpensTheStreamInAStationsPlaylist) {
    std::string list;
    HttpServer server([&](Client& client) {
        if (client.request.starts_with("GET /sound")) return HttpServer::sendFile(client, flac());
        client.send("HTTP/1.1 200 OK\r\nContent-Type: audio/mpeg\r\n\r\n" + list); // many say no better
    });
    const std::string url = server.url("/sound");
    for (const std::string& good :
         {"#EXTM3U\n#EXTINF:-1,Radio\n" + url + "\n", url + "\r\nhttp://127.0.0.1:1/\r\n",
          "\xEF\xBB\xBF\r\n#EXTM3U\r" + url + "\r",
          "[playlist]\nNumberOfEntries=1\nFile1=" + url + "\nTitle1=x",
          "[PLAYLIST]\r\nTitle1=File\r\nfile1= " + url + " \r\n",
          "# x\n/etc/passwd\nfile:///etc/passwd\n" + url}) {
        list = good;
        const auto source = open(server.url("/list"));
        ASSERT_TRUE(source) << good;
        expectSound(*source, 0, 2000);
    }
    for (const std::string& bad :
         {std::string("#EXTM3U\n/music/a.mp3\n"), "#EXTM3U\n#EXT-X-TARGETDURATION:9\n" + url,
          "#EXTM3U\n" + server.url("/list"), "#EXTM3U\nfile://" + url, std::string("[playlist]\n"),
          "#" + std::string(70'000, 'x') + "\n" + url}) {
        list = bad;
        const int before = server.requestCount();
        EXPECT_FALSE(open(server.url("/list"), quick)) << bad.substr(0, 80);
        EXPECT_LE(server.requestCount() - before, 2);
    }
}

TEST(Network, PlaysTheLinksOfAChainedStreamInTurn) {
    // Noise leaves the decoder far from where the next link starts.
    const auto opus = support::encode("noise.opus", support::noise(frames));
    for (const std::string& link : {ogg(), support::readFile(opus)}) {
        HttpServer server([&](Client& client) {
            client.send(liveHead + link + link);
            client.stall();
        });
        const auto source = open(server.url());
        ASSERT_TRUE(source);
        const sounds::Decoded twice = sounds::read(*source, 2 * frames - 5000);
        EXPECT_EQ(twice.frames(), 2 * frames - 5000);
        const auto [first, both] =
            std::pair(std::span(twice.samples).first(frames), std::span(twice.samples));
        EXPECT_LT(std::ranges::max(both), 1.5F * std::ranges::max(first));
        EXPECT_EQ(server.requestCount(), 1);
    }
}

TEST(Network, BacksOffFromAStreamThatDropsAtOnce) {
    HttpServer server([part = ogg().substr(0, 20'000)](Client& client) { client.send(liveHead + part); });
    const auto source = open(server.url(), quick);
    ASSERT_TRUE(source);
    const auto start = Clock::now();
    while (server.requestCount() < 6)
        ASSERT_EQ(sounds::read(*source, 1).frames(), 1);
    EXPECT_GE(Clock::now() - start, 20ms + 40ms + 80ms + 80ms);
}

TEST(Network, SkipsTagsAndPicturesBeforeTheSound) {
    const auto tagged = [](const std::string& bytes) {
        const int size = 3 << 20;
        std::string tag = std::string("ID3\x03\0\0", 6);
        for (int shift = 21; shift >= 0; shift -= 7)
            tag.push_back(static_cast<char>(size >> shift & 0x7f));
        return tag + std::string(size, '\0') + bytes;
    };
    std::string picture = "\x06\x30"; // three megabytes of it, behind the first block
    picture += std::string("\0\0", 2) + std::string(3 << 20, '\0');
    const std::string pictured = std::string(flac()).insert(4 + 4 + 34, picture);
    for (const std::string& file : {tagged(flac()), pictured, tagged(pictured)}) {
        HttpServer server([&](Client& client) { HttpServer::sendFile(client, file); });
        const auto source = open(server.url());
        ASSERT_TRUE(source);
        EXPECT_EQ(source->lengthFrames(), frames);
        expectSound(*source, 0, frames);
        ASSERT_TRUE(source->seek(200'000));
        expectSound(*source, 200'000, 5000);
        // A client that cannot ask for ranges reads through the tag.
        HttpServer live([&](Client& client) {
            client.send(liveHead + file);
            client.stall();
        });
        const auto stream = open(live.url());
        ASSERT_TRUE(stream);
        expectSound(*stream, 0, frames / 2);
    }
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
        EXPECT_TRUE(open(server.url())) << target;
    }
    for (const std::string& bad : {"file://" + wav.string(), wav.string(), "concat:" + wav.string(),
                                   std::string("gopher://127.0.0.1/"), std::string("/loop")}) {
        target = bad;
        const auto opened = bass::openUrl(server.url(), std::make_shared<bass::Cancel>());
        EXPECT_FALSE(opened.source) << bad;
        EXPECT_EQ(opened.failure, Failure::httpStatus) << bad;
    }
}

TEST(Network, NeverReachesALocalFile) {
    const auto wav = support::writeWav(support::scratch() / "local.wav", sound());
    const std::string list =
        "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nfile://" + wav.string() + "\n#EXT-X-ENDLIST\n";
    HttpServer server([&](Client& client) { HttpServer::sendFile(client, list); });
    EXPECT_FALSE(open(server.url("/list.m3u8")));
    for (const std::string& url :
         {wav.string(), "file://" + wav.string(), "concat:http://x|" + wav.string(),
          std::string("ftp://127.0.0.1/http"), std::string("http:"), std::string("http://"),
          std::string("http:///a"), std::string("http://127.0.0.1/a HTTP/1.0\r\nX: y"),
          std::string("x http://127.0.0.1/"), std::string()}) {
        EXPECT_FALSE(bass::isHttpAddress(url)) << url;
        EXPECT_FALSE(open(url)) << url;
    }
    for (const char* url : {"http://a", " \tHttPs://a/b?c\n", "HTTP://[::1]:80"})
        EXPECT_TRUE(bass::isHttpAddress(url)) << url;
}

} // namespace
