#include "tests/bass/Listener.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

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
