#pragma once

#include "platform/bass/source/Source.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

namespace bass {

/// Timeouts and limits for a server.
struct NetworkLimits {
    using Duration = std::chrono::steady_clock::duration;

    Duration connect =
        std::chrono::seconds(5); ///< name look-up, connection, TLS, redirects and headers together
    Duration opening = std::chrono::seconds(10); ///< `connect`, and the bytes up to the first decoded frame
    Duration silence = std::chrono::seconds(10); ///< without a byte: drop the connection
    Duration resume = std::chrono::seconds(60);  ///< without a byte: give up a finite file
    Duration firstPause =
        std::chrono::milliseconds(250); ///< before the second attempt; doubled for each later one
    Duration maxPause = std::chrono::seconds(8);
    std::size_t headerBytes = std::size_t{128} * 1024; ///< of all responses to one request
};

/// As openUrl of Source.h, with given limits.
[[nodiscard]] OpenedSource openUrl(const std::string& address, std::shared_ptr<Cancel> cancel,
                                   const NetworkLimits& limits);

} // namespace bass
