#pragma once

#include <cstddef>

namespace bass {

/// What FFmpeg's network protocols report only in their log.
struct ProtocolLog {
    int httpStatus = 0;          ///< of the last response; 0 before one
    std::size_t headerBytes = 0; ///< of all responses
    bool nameNotFound = false;
    bool certificate = false; ///< the server's was rejected
    bool connecting = false;  ///< an error was logged below HTTP
};

/// Fills a ProtocolLog with what FFmpeg logs in this thread, until it is destroyed.
class ProtocolLogScope {
public:
    explicit ProtocolLogScope(ProtocolLog& log);
    ~ProtocolLogScope();
    ProtocolLogScope(const ProtocolLogScope&) = delete;
    ProtocolLogScope& operator=(const ProtocolLogScope&) = delete;
};

/// Lets FFmpeg print nothing; must precede its first use.
void silenceFfmpeg();

} // namespace bass
