#include "platform/bass/source/NetworkLimits.h"

#include "tests/bass/Sounds.h"
#include "tests/support/Child.h"
#include "tests/support/HttpServer.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <arpa/inet.h>
#include <fstream>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <list>
#include <malloc.h>
#include <ogg/ogg.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using bass::Failure;
using support::HttpServer;
using Client = HttpServer::Client;
using Clock = std::chrono::steady_clock;
using Status = bass::ReadResult::Status;
using namespace std::chrono_literals;

const std::string head = "HTTP/1.1 200 OK\r\n";
const std::string liveHead = head + "icy-name: test\r\n\r\n";

/// Short timeouts, for fast tests.
constexpr bass::NetworkLimits quick{.connect = 3s, .opening = 4s, .silence = 3s, .resume = 3s};
/// Timeouts so long that only a cancellation ends a wait.
constexpr bass::NetworkLimits patient{
    .connect = 1min, .opening = 1min, .silence = 1min, .resume = 1min, .firstPause = 1min, .maxPause = 1min};

/// A loopback port whose connections are neither accepted nor refused (`full`), or always refused.
class DeadPort {
public:
    explicit DeadPort(bool full) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        bind(m_sockets[0], generic, size);
        getsockname(m_sockets[0], generic, &size);
        m_port = ntohs(address.sin_port);
        if (!full) return;
        listen(m_sockets[0], 0);
        for (std::size_t i = 1; i < std::size(m_sockets); ++i)
            static_cast<void>(connect(m_sockets[i], generic, size));
    }
    ~DeadPort() {
        for (const int socket : m_sockets)
            close(socket);
    }
    DeadPort(const DeadPort&) = delete;
    DeadPort& operator=(const DeadPort&) = delete;
    [[nodiscard]] std::string url() const { return "http://127.0.0.1:" + std::to_string(m_port) + "/"; }

private:
    static int newSocket() { return socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0); }
    int m_sockets[4] = {newSocket(), newSocket(), newSocket(), newSocket()};
    int m_port = 0;
};

/// An HTTPS server whose certificate is not trusted.
class SelfSignedServer {
public:
    SelfSignedServer() {
        const auto key = support::scratch() / "key.pem", certificate = support::scratch() / "certificate.pem";
        const auto log = support::scratch() / "tls.log";
        support::run({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
                      "-nodes", "-subj", "/CN=127.0.0.1", "-keyout", key, "-out", certificate});
        m_server = support::Child(
            {"openssl", "s_server", "-accept", "127.0.0.1:0", "-www", "-key", key, "-cert", certificate},
            log);
        const std::string marker = "ACCEPT 127.0.0.1:";
        static_cast<void>(support::waitFor([&] {
            const std::string text = support::readFile(log);
            const std::size_t at = text.find(marker);
            if (at == std::string::npos || text.find('\n', at) == std::string::npos) return false;
            m_port = std::stoi(text.substr(at + marker.size()));
            return true;
        }));
    }
    [[nodiscard]] std::string url() const { return "https://127.0.0.1:" + std::to_string(m_port) + "/"; }

private:
    support::Child m_server;
    int m_port = 0;
};

HttpServer::Answer sending(const std::string& bytes) {
    return [=](Client& client) { client.send(bytes); };
}

HttpServer::Answer stallingAfter(const std::string& bytes) {
    return [=](Client& client) {
        client.send(bytes);
        client.stall();
    };
}

HttpServer::Answer floodingWith(const std::string& start, const std::string& again) {
    return [=](Client& client) {
        client.send(start);
        client.flood(again);
    };
}

TEST(HostileServer, EveryFailureHasItsReason) {
    const DeadPort refusing(false), full(true);
    const SelfSignedServer selfSigned;
    const std::string farName = "http://" + std::string(70, 'a') + ".invalid/"; // longer than a name may be
    const auto status = [](int code) {
        return sending("HTTP/1.1 " + std::to_string(code) + " Text\r\n\r\n");
    };
    const auto trickling = [](const std::string& start) {
        return [=](Client& client) {
            client.send(start);
            client.trickle(50ms);
        };
    };
    const struct {
        const char* what;
        HttpServer::Answer answer;
        Failure failure;
        int httpStatus = 0;
        std::string url = {};
    } cases[] = {
        {"no such name", {}, Failure::nameNotFound, 0, farName},
        {"a closed port", {}, Failure::refused, 0, refusing.url()},
        {"a queue that is full", {}, Failure::timeout, 0, full.url()},
        {"an unknown certificate", {}, Failure::certificate, 0, selfSigned.url()},
        {"no answer", stallingAfter(""), Failure::timeout},
        {"no TLS answer", stallingAfter(""), Failure::timeout, 0, "https"},
        {"a closed connection", sending(""), Failure::refused},
        {"half a header", sending("HTTP/1.1 200 O"), Failure::refused},
        {"not found", status(404), Failure::httpStatus, 404},
        {"gone", status(410), Failure::httpStatus, 410},
        {"unauthorized", status(401), Failure::httpStatus, 401},
        {"unavailable", status(503), Failure::httpStatus, 503},
        {"a redirect in circles", sending("HTTP/1.1 307 There\r\nLocation: /\r\n\r\n"), Failure::httpStatus,
         307},
        {"a redirect to a closed port",
         sending("HTTP/1.1 302 There\r\nLocation: " + refusing.url() + "\r\n\r\n"), Failure::refused},
        {"no sound", sending(head + "\r\n" + std::string(5000, 'x')), Failure::noAudio},
        {"an empty stream", sending(liveHead), Failure::noAudio},
        {"a stream without a byte", stallingAfter(liveHead), Failure::timeout},
        {"a byte now and then", trickling(liveHead), Failure::timeout},
        {"a header now and then", trickling(head), Failure::timeout},
        {"a header line without end", floodingWith(head, std::string(9000, 'x')), Failure::timeout},
        {"headers without end", floodingWith(head, "icy-a: " + std::string(3000, 'b') + "\r\n"),
         Failure::noAudio},
    };
    std::vector<std::future<bass::OpenedSource>> results; // all at once: most of them wait
    std::list<HttpServer> servers;
    for (const auto& each : cases) {
        const HttpServer& server = servers.emplace_back(each.answer);
        const std::string own = (each.url == "https" ? "https" : "http") + server.url().substr(4);
        const std::string url =
            each.url.starts_with("http:") || each.url.starts_with("https:") ? each.url : own;
        results.push_back(std::async(
            std::launch::async, [=] { return bass::openUrl(url, std::make_shared<bass::Cancel>(), quick); }));
    }
    const auto start = Clock::now();
    for (std::size_t i = 0; i < results.size(); ++i) {
        SCOPED_TRACE(cases[i].what);
        const bass::OpenedSource opened = results[i].get();
        EXPECT_FALSE(opened.source);
        EXPECT_EQ(static_cast<int>(opened.failure), static_cast<int>(cases[i].failure));
        EXPECT_EQ(opened.httpStatus, cases[i].httpStatus);
    }
    EXPECT_LT(Clock::now() - start, 10s);
}

/// Peak memory of this process in bytes since the last call; 0 where sanitizers fill it.
std::int64_t peakMemory() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return 0;
#else
    std::ifstream status("/proc/self/status");
    std::int64_t kilobytes = 0;
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:")) kilobytes = std::stoll(line.substr(6));
    malloc_trim(0); // or what was freed before hides what is taken
    std::ofstream("/proc/self/clear_refs") << "5";
    return kilobytes * 1024;
#endif
}

std::string id3Tag(int size) {
    std::string tag("ID3\x03\0\0", 6);
    for (int shift = 21; shift >= 0; shift -= 7)
        tag.push_back(static_cast<char>(size >> shift & 0x7f));
    return tag;
}

/// The first page of a Vorbis stream, and a comment that starts and never ends.
std::pair<std::string, std::string> endlessOggComment() {
    const std::string file = support::readFile(support::encode("hostile.ogg", sounds::sweep(5000)));
    std::string page = file.substr(file.find("OggS", 4), 27); // its serial number and all
    page[5] = 1;                                              // goes on from the page before
    page[26] = static_cast<char>(255);
    page += std::string(255, static_cast<char>(255)) + std::string(255 * 255, 'x');
    const auto check = [](std::string& bytes) {
        constexpr long headBytes = 27 + 255;
        auto* data = reinterpret_cast<unsigned char*>(bytes.data());
        ogg_page parts{data, headBytes, data + headBytes, static_cast<long>(bytes.size()) - headBytes};
        ogg_page_checksum_set(&parts);
    };
    check(page);
    std::string start = page;
    start[5] = 0;
    const std::string comment("\3vorbis\4\0\0\0test\1\0\0\0\xff\xff\xff\x7f", 23);
    start.replace(27 + 255, comment.size(), comment);
    check(start);
    return {file.substr(0, file.find("OggS", 4)) + start, page};
}

TEST(HostileServer, MemoryStaysBounded) {
    const std::string flac = support::readFile(support::encode("hostile.flac", sounds::sweep(5000)));
    const std::string flacStart = flac.substr(0, 42);
    const std::string picture("APIC\x0f\xff\xff\xff\0\0\0image/png\0\3\0", 23);
    const std::string flacPicture = std::string("\6\xff\xff\xff", 4) + std::string(0xffffff, '\0');
    const auto [oggStart, oggPage] = endlessOggComment();
    const std::string zeros(64 * 1024, '\0');
    std::string icyFields; // each block of 4080 bytes brings a field that was never there
    icyFields.reserve(4096 * 4096);
    for (int i = 0; i < 4096; ++i) {
        std::string block = std::to_string(i) + std::string(4000, 'k') + "='v';";
        block.resize(4080);
        icyFields += "x\xff" + block;
    }
    const std::string sized = head + "Accept-Ranges: bytes\r\nContent-Length: 4000000000\r\n\r\n";
    const struct {
        const char* what;
        std::string start, again;
    } cases[] = {
        {"ICY headers", head, "icy-a: " + std::string(3000, 'x') + "\r\n"},
        {"cookies", head, "Set-Cookie: " + std::string(3000, 'x') + "=y\r\n"},
        {"an ID3 tag of 256 MB", liveHead + id3Tag((256 << 20) - 1) + picture, zeros},
        {"a FLAC picture after another", liveHead + flacStart, flacPicture},
        {"the same in a sized file", sized + flacStart, flacPicture},
        {"an Ogg comment without end", liveHead + oggStart, oggPage},
        {"fields of ICY metadata", head + "icy-name: a\r\nicy-metaint: 1\r\n\r\n", icyFields},
    };
    for (const auto& [what, start, again] : cases) {
        SCOPED_TRACE(what);
        HttpServer server(floodingWith(start, again));
        peakMemory();
        const std::int64_t before = peakMemory();
        const auto opened = bass::openUrl(server.url(), std::make_shared<bass::Cancel>(), {.opening = 1s});
        EXPECT_FALSE(opened.source);
        EXPECT_LT(peakMemory() - before, 16 << 20);
    }
}

TEST(HostileServer, CancellationEndsEveryWaitAtOnce) {
    const std::string flac = support::readFile(support::encode("wait.flac", sounds::sweep(400'000)));
    const std::string ogg = support::readFile(support::encode("wait.ogg", sounds::sweep(400'000)));
    const DeadPort full(true);
    const auto sizedStalling = [&](Client& client) {
        HttpServer::sendFile(client, flac, flac.size() / 2);
        client.stall();
    };
    const auto sizedDropping = [&](Client& client) {
        HttpServer::sendFile(client, flac, client.rangeStart() == 0 ? flac.size() / 2 : 0);
    };
    const struct {
        const char* what;
        HttpServer::Answer answer;
        bool opens;
        bool closes = false; ///< only a close ends it
        std::string url = {};
    } cases[] = {
        {"connecting", {}, false, false, full.url()},
        {"the TLS handshake", stallingAfter(""), false, false, "https"},
        {"headers", stallingAfter(head), false},
        {"the first sound of a stream", stallingAfter(liveHead + ogg.substr(0, 50)), false},
        {"a read of a file", sizedStalling, true},
        {"the back-off of a file", sizedDropping, true},
        {"a read of a stream", stallingAfter(liveHead + ogg.substr(0, ogg.size() / 2)), true, true},
        {"the back-off of a stream", sending(liveHead + ogg.substr(0, 20'000)), true},
    };
    for (const auto& [what, answer, opens, closes, url] : cases) {
        SCOPED_TRACE(what);
        HttpServer server(answer);
        const std::string own = url.empty() ? server.url() : "https" + server.url().substr(4);
        const auto cancel = std::make_shared<bass::Cancel>();
        std::atomic<bool> waits = false;
        Clock::time_point asked;
        std::thread canceller([&] {
            static_cast<void>(support::waitFor([&] { return waits.load(); }));
            std::this_thread::sleep_for(
                300ms); // the call blocks by now; on a slow machine it is ended sooner
            asked = Clock::now();
            closes ? cancel->close() : cancel->cancel();
        });
        waits = !opens;
        const auto opened = bass::openUrl(url.starts_with("http:") ? url : own, cancel, patient);
        EXPECT_EQ(opened.source != nullptr, opens);
        waits = true;
        EXPECT_EQ(opened.source ? sounds::read(*opened.source).status : Status::cancelled, Status::cancelled);
        const auto ended = Clock::now();
        canceller.join();
        EXPECT_EQ(opened.failure, Failure::none);
        EXPECT_LT(ended - asked, 500ms); // FFmpeg notices within 100
    }
}

TEST(HostileServer, ACancelledFileContinuesWithoutLoss) {
    const auto samples = sounds::sweep(400'000);
    const std::string flac = support::readFile(support::encode("continued.flac", samples));
    std::atomic<bool> stalls = true;
    HttpServer server([&](Client& client) {
        HttpServer::sendFile(client, flac, stalls ? flac.size() / 2 : flac.size());
        client.stall();
    });
    const auto cancel = std::make_shared<bass::Cancel>();
    const auto opened = bass::openUrl(server.url(), cancel, patient);
    ASSERT_TRUE(opened.source);
    const std::vector<float> played = sounds::exactly(samples);
    std::thread canceller([&] {
        std::this_thread::sleep_for(300ms);
        stalls = false;
        cancel->cancel();
    });
    sounds::Decoded all = sounds::read(*opened.source);
    canceller.join();
    EXPECT_EQ(all.status, Status::cancelled);
    EXPECT_LT(all.frames(), 300'000);
    cancel->clear();
    const sounds::Decoded rest = sounds::read(*opened.source);
    EXPECT_EQ(rest.status, Status::end);
    all.samples.insert(all.samples.end(), rest.samples.begin(), rest.samples.end());
    EXPECT_TRUE(all.samples == played);
}

} // namespace
