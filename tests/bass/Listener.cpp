#include "tests/bass/Listener.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

namespace {

template <typename T> T little(const std::string& bytes, std::size_t at) {
    T value{};
    std::memcpy(&value, bytes.data() + at, sizeof(value));
    return value;
}

} // namespace

Listener::Listener(int port, const std::string& request, Reads reads)
    : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        close(m_socket);
        throw std::runtime_error("no server");
    }
    send(request);
    if (reads == Reads::everything) read();
}

Listener::~Listener() {
    shutdown(m_socket, SHUT_RDWR);
    if (m_thread.joinable()) m_thread.join();
    close(m_socket);
}

void Listener::send(const std::string& more) const {
    ::send(m_socket, more.data(), more.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

void Listener::read() {
    if (!m_thread.joinable()) m_thread = std::thread([this] { collect(); });
}

std::string Listener::received() const {
    const std::lock_guard lock(m_mutex);
    return m_received;
}

std::string Listener::body() const {
    const std::string all = received();
    const auto head = all.find("\r\n\r\n");
    return head == std::string::npos ? "" : all.substr(head + 4);
}

void Listener::collect() {
    char buffer[16384];
    for (ssize_t count = 0; (count = recv(m_socket, buffer, sizeof(buffer), 0)) > 0;) {
        const std::lock_guard lock(m_mutex);
        m_received.append(buffer, static_cast<std::size_t>(count));
    }
    m_closed = true;
}

std::vector<OggPage> oggPages(const std::string& stream) {
    std::vector<OggPage> pages;
    std::size_t at = 0;
    while (at + 27 <= stream.size() && stream.compare(at, 4, "OggS") == 0) {
        const auto segments = static_cast<std::uint8_t>(stream[at + 26]);
        std::size_t size = 27U + segments;
        if (at + size > stream.size()) break;
        for (int i = 0; i < segments; ++i)
            size += static_cast<std::uint8_t>(stream[at + 27 + static_cast<std::size_t>(i)]);
        if (at + size > stream.size()) break;
        pages.push_back({little<std::int64_t>(stream, at + 6), little<std::uint32_t>(stream, at + 14),
                         stream.substr(at, size)});
        at += size;
    }
    return pages;
}
