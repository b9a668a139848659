#pragma once

#include <cstdint>

/// Why a source does not play.
struct TulFailure {
    enum class Kind {
        none,
        notOpened,    ///< rejected: neither an address nor a file with an extension
        notFound,     ///< no such file
        unreadable,   ///< not a regular file, no permission, or a read error
        noAudio,      ///< no sound in it that can be decoded
        nameNotFound, ///< the host name does not resolve
        refused,      ///< no connection: refused, unreachable, reset
        timeout,      ///< no answer in time
        httpStatus,   ///< the server answered with an error
        certificate,  ///< the server's certificate is not trusted
        lost,         ///< the connection broke off during playback, and reconnecting failed
    };

    Kind kind = Kind::none;
    /// The HTTP status code (404, 503, ...) of Kind::httpStatus.
    std::uint32_t httpStatus = 0;

    explicit operator bool() const { return kind != Kind::none; }
    bool operator==(const TulFailure&) const = default;
};
