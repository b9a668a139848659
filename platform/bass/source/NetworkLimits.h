#pragma once

#include "platform/bass/source/Source.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

namespace bass {

/// How long, and how much, is waited for a server.
struct NetworkLimits {
    using Duration = std::chrono::steady_clock::duration;

    Duration connect = std::chrono::seconds(5);  ///< name, connection, TLS, redirects and headers together
    Duration opening = std::chrono::seconds(10); ///< all that, and the bytes up to the first decoded frame
    Duration silence = std::chrono::seconds(10); ///< without a byte: the connection is taken for dead
    Duration resume = std::chrono::seconds(60);  ///< without a byte: a finite file is given up
    Duration firstPause =
        std::chrono::milliseconds(250); ///< before the second try; doubled for each later one
    Duration maxPause = std::chrono::seconds(8);
    std::size_t headerBytes = std::size_t{128} * 1024; ///< of all responses to one request
};

/// As openUrl of Source.h, with other limits.
[[nodiscard]] OpenedSource openUrl(const std::string& address, std::shared_ptr<Cancel> cancel,
                                   const NetworkLimits& limits);

} // namespace bass
