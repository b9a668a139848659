#pragma once

#include <cstdint>

/// Why a source does not play.
struct TulFailure {
    enum class Kind {
        none,
        notOpened,    ///< no source that could be tried: neither an address nor a file with an extension
        notFound,     ///< no such file
        unreadable,   ///< no regular file, no permission, or an error of the disk
        noAudio,      ///< nothing in it that can be decoded
        nameNotFound, ///< the host's name does not resolve
        refused,      ///< no connection: refused, unreachable, reset
        timeout,      ///< no answer in time
        httpStatus,   ///< the server answered with an error
        certificate,  ///< the server's certificate is not trusted
        lost,         ///< broke off while it played, for good
    };

    Kind kind = Kind::none;
    /// With Kind::httpStatus: what the server answered (404, 503, ...).
    std::uint32_t httpStatus = 0;

    explicit operator bool() const { return kind != Kind::none; }
    bool operator==(const TulFailure&) const = default;
};
