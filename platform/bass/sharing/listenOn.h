#pragma once

#include "platform/bass/sharing/FileDescriptor.h"

#include <cstdint>

namespace bass {

/// A non-blocking TCP socket that listens on a port of all local addresses, IPv6 and IPv4, or IPv4 alone
/// where the machine has no IPv6. Port 0 takes one that is free. None when the port is taken.
FileDescriptor listenOn(std::uint16_t port);

/// The port that a listening socket has.
std::uint16_t portOf(const FileDescriptor& socket);

} // namespace bass
