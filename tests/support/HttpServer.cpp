#include "tests/support/HttpServer.h"

#include <algorithm>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace support {
namespace {

constexpr int pollMilliseconds = 20;

bool waitFor(int socket, short events, const std::atomic<bool>& stopping,
             std::chrono::milliseconds limit = std::chrono::hours(1)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!stopping && std::chrono::steady_clock::now() < end) {
        pollfd state{socket, events, 0};
        if (poll(&state, 1, pollMilliseconds) > 0) return true;
    }
    return false;
}

} // namespace

bool HttpServer::Client::send(std::string_view bytes) {
    while (!bytes.empty()) {
        if (!waitFor(m_socket, POLLOUT, m_server->m_stopping)) return false;
        const ssize_t sent = ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
        m_server->m_sent += sent;
    }
    return true;
}

void HttpServer::Client::flood(std::string_view bytes) {
    while (send(bytes)) {
    }
}

void HttpServer::Client::trickle(std::chrono::milliseconds interval) {
    while (!waitFor(m_socket, POLLRDHUP, m_server->m_stopping, interval) && send("x")) {
    }
}

void HttpServer::Client::stall() {
    waitFor(m_socket, POLLIN | POLLRDHUP, m_server->m_stopping);
}

std::size_t HttpServer::Client::rangeStart() const {
    const std::string field = "Range: bytes=";
    const std::size_t at = request.find(field);
    return at == std::string::npos ? 0 : std::stoul(request.substr(at + field.size()));
}

HttpServer::HttpServer(Answer answer) : m_answer(std::move(answer)) {
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (m_listener < 0 || bind(m_listener, generic, size) != 0 || listen(m_listener, 16) != 0 ||
        getsockname(m_listener, generic, &size) != 0)
        throw std::runtime_error("no loopback server");
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { accept(); });
}

HttpServer::~HttpServer() {
    m_stopping = true;
    m_acceptor.join();
    for (auto& client : m_clients)
        client.join();
    close(m_listener);
}

std::string HttpServer::url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(m_port) + path;
}

void HttpServer::accept() {
    while (waitFor(m_listener, POLLIN, m_stopping)) {
        const int client = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client >= 0) m_clients.emplace_back([this, client] { serve(client); });
    }
}

void HttpServer::serve(int socket) {
    Client client;
    client.m_socket = socket;
    client.m_server = this;
    char byte = 0;
    while (!client.request.ends_with("\r\n\r\n") && waitFor(socket, POLLIN, m_stopping) &&
           recv(socket, &byte, 1, 0) == 1)
        client.request += byte;
    ++m_requests;
    m_answer(client);
    shutdown(socket, SHUT_RDWR);
    close(socket);
}

void HttpServer::sendFile(Client& client, std::string_view content, std::size_t most) {
    const std::size_t start = client.rangeStart();
    const std::string size = std::to_string(content.size());
    const std::string_view rest = content.substr(std::min(start, content.size()));
    client.send("HTTP/1.1 206 Partial Content\r\nAccept-Ranges: bytes\r\nConnection: close\r\n"
                "Content-Range: bytes " +
                std::to_string(start) + "-" + std::to_string(content.size() - 1) + "/" + size +
                "\r\nContent-Length: " + std::to_string(rest.size()) + "\r\n\r\n");
    client.send(rest.substr(0, most));
}

void HttpServer::sendRadio(Client& client, const std::string& name, std::string_view content,
                           std::size_t interval, const std::vector<std::string>& packets) {
    client.send("ICY 200 OK\r\nicy-name: " + name + "\r\nicy-metaint: " + std::to_string(interval) +
                "\r\n\r\n");
    for (std::size_t i = 0; i * interval < content.size(); ++i) {
        if (!client.send(content.substr(i * interval, interval))) return;
        std::string packet = i < packets.size() ? packets[i] : std::string();
        packet.resize((packet.size() + 15) / 16 * 16);
        if (!client.send(static_cast<char>(packet.size() / 16) + packet)) return;
    }
}

} // namespace support
