#pragma once

#include <cstddef>

namespace bass {

/// Facts that FFmpeg's network protocols report only in their log.
struct ProtocolLog {
    int httpStatus = 0;          ///< of the last response; 0 before the first
    std::size_t headerBytes = 0; ///< of all responses
    bool nameNotFound = false;
    bool certificate = false; ///< the server's certificate was rejected
    bool connecting = false;  ///< an error was logged below HTTP
};

/// While it lives, fills a ProtocolLog from FFmpeg's log messages on this thread.
class ProtocolLogScope {
public:
    explicit ProtocolLogScope(ProtocolLog& log);
    ~ProtocolLogScope();
    ProtocolLogScope(const ProtocolLogScope&) = delete;
    ProtocolLogScope& operator=(const ProtocolLogScope&) = delete;
};

/// Disables FFmpeg's output. Call it before FFmpeg is used.
void silenceFfmpeg();

} // namespace bass
