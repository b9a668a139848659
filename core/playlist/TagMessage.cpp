#include "core/playlist/TagMessage.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <span>
#include <sys/socket.h>
#include <sys/uio.h>

namespace tags {
namespace {

bool receiveAll(int socket, char* into, std::size_t size) {
    while (size > 0) {
        const ssize_t count = ::recv(socket, into, size, MSG_WAITALL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        into += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

bool send(int socket, std::string_view message) {
    auto size = static_cast<std::uint32_t>(message.size());
    std::array<iovec, 2> parts{{{&size, sizeof size}, {const_cast<char*>(message.data()), message.size()}}};
    std::span<iovec> rest(parts);
    while (!rest.empty()) {
        msghdr header{};
        header.msg_iov = rest.data();
        header.msg_iovlen = rest.size();
        const ssize_t count = ::sendmsg(socket, &header, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        auto sent = static_cast<std::size_t>(count);
        while (!rest.empty() && sent >= rest.front().iov_len) {
            sent -= rest.front().iov_len;
            rest = rest.subspan(1);
        }
        if (rest.empty()) break;
        rest.front().iov_base = static_cast<char*>(rest.front().iov_base) + sent;
        rest.front().iov_len -= sent;
    }
    return true;
}

std::optional<Message> receive(int socket) {
    std::uint32_t size = 0;
    if (!receiveAll(socket, reinterpret_cast<char*>(&size), sizeof size) || size > maxPictureBytes)
        return std::nullopt;
    Message message{std::make_unique_for_overwrite<char[]>(size), size};
    if (!receiveAll(socket, message.bytes.get(), size)) return std::nullopt;
    return message;
}

} // namespace tags
