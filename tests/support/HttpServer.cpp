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

bool waitFor(int socket, short events, const std::atomic<bool>& stopping) {
    while (!stopping) {
        pollfd state{socket, events, 0};
        if (poll(&state, 1, pollMilliseconds) > 0) return true;
    }
    return false;
}

} // namespace

bool HttpServer::Client::send(std::string_view bytes) {
    while (!bytes.empty()) {
        if (!waitFor(socket_, POLLOUT, *stopping_)) return false;
        const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

void HttpServer::Client::stall() {
    waitFor(socket_, POLLIN | POLLRDHUP, *stopping_);
}

std::size_t HttpServer::Client::rangeStart() const {
    const std::string field = "Range: bytes=";
    const std::size_t at = request.find(field);
    return at == std::string::npos ? 0 : std::stoul(request.substr(at + field.size()));
}

HttpServer::HttpServer(Answer answer) : answer_(std::move(answer)) {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (listener_ < 0 || bind(listener_, generic, size) != 0 || listen(listener_, 16) != 0 ||
        getsockname(listener_, generic, &size) != 0)
        throw std::runtime_error("no loopback server");
    port_ = ntohs(address.sin_port);
    acceptor_ = std::thread([this] { accept(); });
}

HttpServer::~HttpServer() {
    stopping_ = true;
    acceptor_.join();
    for (auto& client : clients_)
        client.join();
    close(listener_);
}

std::string HttpServer::url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

void HttpServer::accept() {
    while (waitFor(listener_, POLLIN, stopping_)) {
        const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (client >= 0) clients_.emplace_back([this, client] { serve(client); });
    }
}

void HttpServer::serve(int socket) {
    Client client;
    client.socket_ = socket;
    client.stopping_ = &stopping_;
    char byte = 0;
    while (!client.request.ends_with("\r\n\r\n") && waitFor(socket, POLLIN, stopping_) &&
           recv(socket, &byte, 1, 0) == 1)
        client.request += byte;
    ++requests_;
    answer_(client);
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

} // namespace support
