#include "platform/bass/sharing/listenOn.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>

namespace bass {

namespace {

/// What the kernel may hold for a listener that does not read; the kernel doubles it. The rest of its backlog
/// is counted in pages.
constexpr int sendBufferBytes = 65536;
constexpr int waitingConnections = 1024;

FileDescriptor openSocket(int family) {
    FileDescriptor socket(::socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket) return socket; // with the reason in errno
    const int on = 1;
    const int off = 0;
    // Connections of a server before this one, that are being closed, don't keep the port.
    setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    setsockopt(socket.get(), SOL_SOCKET, SO_SNDBUF, &sendBufferBytes, sizeof(sendBufferBytes));
    setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on)); // a page's end waits for nothing
    if (family == AF_INET6) setsockopt(socket.get(), IPPROTO_IPV6, IPV6_V6ONLY, &off, sizeof(off));
    return socket;
}

template <typename Address> FileDescriptor listenAt(const Address& address, int family) {
    FileDescriptor socket = openSocket(family);
    if (!socket) return {};
    if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) return {};
    if (listen(socket.get(), waitingConnections) != 0) return {};
    return socket;
}

} // namespace

FileDescriptor listenOn(std::uint16_t port) {
    sockaddr_in6 both{};
    both.sin6_family = AF_INET6;
    both.sin6_port = htons(port);
    if (FileDescriptor socket = listenAt(both, AF_INET6)) return socket;
    if (errno != EAFNOSUPPORT && errno != EADDRNOTAVAIL) return {};

    sockaddr_in four{};
    four.sin_family = AF_INET;
    four.sin_port = htons(port);
    return listenAt(four, AF_INET);
}

std::uint16_t portOf(const FileDescriptor& socket) {
    sockaddr_in6 address{};
    socklen_t size = sizeof(address);
    if (getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
    return ntohs(address.sin6_port); // at the same place in an IPv4 address
}

} // namespace bass
