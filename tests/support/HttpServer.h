#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace support {

/// A scriptable HTTP server on a loopback port: every request is answered by `Answer` on a thread of its own,
/// with raw bytes, so that answers can be as wrong as a test needs.
class HttpServer {
public:
    /// One client's connection, closed when the answer returns.
    class Client {
    public:
        /// False when the client has disconnected or the server stops.
        bool send(std::string_view bytes);
        /// Sends `bytes` again and again, until the client leaves or the server stops.
        void flood(std::string_view bytes);
        /// Sends one byte per `interval`, until the client leaves or the server stops.
        void trickle(std::chrono::milliseconds interval);
        /// Sends nothing until the client disconnects or the server stops.
        void stall();
        /// The request's head, lines ended by CR LF.
        std::string request;
        /// The first byte of a Range header; 0 without one.
        [[nodiscard]] std::size_t rangeStart() const;

    private:
        friend class HttpServer;
        int m_socket = -1;
        HttpServer* m_server = nullptr;
    };
    using Answer = std::function<void(Client&)>;

    explicit HttpServer(Answer answer);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// http://127.0.0.1:PORT`path`
    [[nodiscard]] std::string url(const std::string& path = "/") const;
    [[nodiscard]] int port() const { return m_port; }
    [[nodiscard]] int requestCount() const { return m_requests; }
    /// Bytes sent to all clients, read or not.
    [[nodiscard]] std::int64_t sentBytes() const { return m_sent; }

    /// Sends `content` as a finite file that honours ranges, at most `most` bytes of it before closing.
    static void sendFile(Client& client, std::string_view content, std::size_t most = std::string::npos);
    /// Sends `content` like a radio station `name`, with an ICY metadata packet after every `interval` bytes:
    /// those of `packets` in order, then empty ones.
    static void sendRadio(Client& client, const std::string& name, std::string_view content,
                          std::size_t interval, const std::vector<std::string>& packets);

private:
    void accept();
    void serve(int socket);

    Answer m_answer;
    int m_listener = -1;
    int m_port = 0;
    std::atomic<bool> m_stopping = false;
    std::atomic<int> m_requests = 0;
    std::atomic<std::int64_t> m_sent = 0;
    std::list<std::thread> m_clients; ///< the accepting thread's, until it is joined
    std::thread m_acceptor;
};

} // namespace support
