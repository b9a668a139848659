#include "platform/bass/sharing/ListenerServer.h"
#include "tests/bass/Listener.h"
#include "tests/support/WaitFor.h"

#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

using bass::ListenerServer;
using bass::PageQueue;
using support::waitFor;

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(open), end(open)));
}

/// A stream of numbered pages of 1000 bytes, with the header "HEAD".
class ListenerServerTest : public testing::Test {
protected:
    ListenerServerTest() {
        pages.setBurst(4000);
        pages.addHeader(bytes("HEAD"));
        addPages(10);
        server = ListenerServer::open(0, pages);
    }
    void SetUp() override { ASSERT_NE(server, nullptr); }

    static PageQueue::Page bytes(const std::string& text) {
        PageQueue::Page page(text.size());
        std::memcpy(page.data(), text.data(), text.size());
        return page;
    }
    static std::string text(int number) {
        std::string page = std::to_string(number) + ":";
        page.resize(1000, static_cast<char>('a' + number % 26));
        return page;
    }
    void addPages(int count) {
        for (int i = 0; i < count; ++i)
            pages.add(bytes(text(added++)));
        if (server) server->wake();
    }
    std::string stream(int from, int to) const {
        std::string all = "HEAD";
        for (int i = from; i < to; ++i)
            all += text(i);
        return all;
    }
    std::string answer(const std::string& request) const {
        const Listener client(server->port(), request);
        EXPECT_TRUE(waitFor([&] { return client.isClosed(); })) << request.substr(0, 100);
        return client.received();
    }

    PageQueue pages;
    int added = 0;
    std::unique_ptr<ListenerServer> server;
};

TEST_F(ListenerServerTest, SendsHeadersThenTheBurstThenNewPages) {
    const Listener early(server->port());
    ASSERT_TRUE(waitFor([&] { return early.body() == stream(6, 10); })) << early.body().size();
    addPages(5);
    ASSERT_TRUE(waitFor([&] { return early.body() == stream(6, 15); }));
    pages.setName("K\u00fcche");
    const Listener late(server->port(), "GET / HTTP/1.0\r\nRange: bytes=5-\r\n\r\n");
    ASSERT_TRUE(waitFor([&] { return late.body() == stream(11, 15); }));
    EXPECT_NE(early.received().find("\r\nicy-name: Tulplayer\r\n"), std::string::npos);
    EXPECT_NE(late.received().find("\r\nicy-name: K\u00fcche\r\n"), std::string::npos);
    EXPECT_TRUE(waitFor([&] { return server->listenerCount() == 2; }));
    pages.end();
    server->wake();
    EXPECT_TRUE(waitFor([&] { return early.isClosed() && late.isClosed(); }));
    for (const auto* client : {&early, &late}) {
        const std::string head = client->received().substr(0, client->received().find("\r\n\r\n"));
        for (const char* field : {" 200 OK", "Content-Type: audio/ogg", "Connection: close"})
            EXPECT_NE(head.find(field), std::string::npos) << field;
        for (const char* field : {"Content-Length", "Transfer-Encoding"})
            EXPECT_EQ(head.find(field), std::string::npos) << field;
    }
    EXPECT_NE(answer("GET / HTTP/1.1\r\nHost: x\r\n\r\n").find(" 503 "), std::string::npos);
}

TEST_F(ListenerServerTest, RespondsToOtherRequests) {
    const struct {
        std::string request;
        std::string expected;
    } cases[] = {
        {"HEAD / HTTP/1.1\r\nHost: x\r\n\r\n", " 200 OK"},
        {"GET /favicon.ico HTTP/1.1\r\nHost: x\r\n\r\n", " 404 "},
        {"GET /robots.txt HTTP/1.0\r\n\r\n", " 404 "},
        {"GET /../../etc/passwd HTTP/1.0\r\n\r\n", " 404 "},
        {"POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 3\r\n\r\nabc", "Allow: GET, HEAD"},
        {"DELETE / HTTP/1.1\r\nHost: x\r\n\r\n", " 405 "},
        {"GET / HTTP/1.1\r\nHost: x\r\nA: " + std::string(8200, 'a') + "\r\n\r\n", " 431 "},
        {"GET / HTTP/1.1\r\nHost: x\r\nA: " + std::string(100000, 'a') + "\r\n\r\n", ""},
        {"GET /" + std::string(100000, 'a') + " HTTP/1.1\r\n\r\n", ""},
        {"GET /\r\n\r\n", ""},
        {"\r\n\r\n\r\n\r\nnonsense\r\n\r\n", ""},
        {"\x16\x03\x01\x02\x01\x01\xfc\x03\x03 a TLS hello\r\n\r\n\r\n", ""},
        {"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", ""},
        {"GET / HTTP/1.1\r\nHost: x\r\nContent-Length: -1\r\n\r\n", ""},
        {"GET / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\nContent-Length: 4\r\n\r\nzz\r\n", ""},
    };
    for (const auto& [request, expected] : cases) {
        const Listener client(server->port(), request);
        const bool mayStream = expected.empty();
        ASSERT_TRUE(waitFor([&] { return client.isClosed() || (mayStream && !client.body().empty()); }))
            << request.substr(0, 60);
        EXPECT_NE(client.received().find(expected), std::string::npos) << client.received().substr(0, 300);
    }
    const Listener after(server->port());
    EXPECT_TRUE(waitFor([&] { return after.body() == stream(6, 10); })) << "all others are served as before";
}

TEST_F(ListenerServerTest, DropsAListenerThatIsFarBehindAndNoOther) {
    const Listener reading(server->port());
    Listener sleeping(server->port(), "GET / HTTP/1.1\r\nHost: x\r\n\r\n", Listener::Reads::nothing);
    ASSERT_TRUE(waitFor([&] { return reading.body() == stream(6, 10); }));
    // What fits into the kernel's buffers is not behind: no more than a few megabytes.
    for (int round = 0; round < 20; ++round) {
        addPages(500);
        ASSERT_TRUE(waitFor([&] { return reading.body().size() >= 4 + 1000U * (added - 6U); }));
    }
    EXPECT_TRUE(waitFor([&] { return server->listenerCount() == 1; }));
    sleeping.read();
    EXPECT_TRUE(waitFor([&] { return sleeping.isClosed(); }));
    EXPECT_LT(sleeping.body().size(), 9000000U);
    EXPECT_EQ(reading.body(), stream(6, added));
}

TEST_F(ListenerServerTest, ClosesConnectionsWithUnfinishedRequests) {
    const Listener silent(server->port(), "");
    const Listener zeros(server->port(), std::string(300, '\0') + "\r\n\r\n");
    Listener slow(server->port(), "GET / HTTP/1.1\r\nA: ");
    const Listener listening(server->port());
    EXPECT_TRUE(waitFor(
        [&] {
            slow.send("a");
            return silent.isClosed() && zeros.isClosed() && slow.isClosed();
        },
        std::chrono::seconds(40)));
    EXPECT_FALSE(listening.isClosed());
}

TEST_F(ListenerServerTest, LeaksNothingWhenClientsConnectAndDisconnect) {
    const Listener staying(server->port());
    ASSERT_TRUE(waitFor([&] { return !staying.body().empty(); }));
    const std::size_t before = openDescriptors();
    for (int i = 0; i < 1000; ++i) {
        const Listener passing(server->port(), i % 3 == 0 ? "GET / HT" : "GET / HTTP/1.1\r\nHost: x\r\n\r\n",
                               i % 2 == 0 ? Listener::Reads::nothing : Listener::Reads::everything);
        if (i % 5 == 0) addPages(1);
    }
    // Who left in the midst of a request is closed with the time for requests.
    EXPECT_TRUE(waitFor(
        [&] {
            if (staying.body().size() == stream(6, added).size()) addPages(1);
            return openDescriptors() == before;
        },
        std::chrono::seconds(40)));
    EXPECT_TRUE(waitFor([&] { return staying.body() == stream(6, added); }));
}

} // namespace
