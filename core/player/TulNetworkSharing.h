#pragma once

#include <cstdint>

class TulStream;

/// Will let other machines hear what the player plays. There is no encoder in the audio library yet: it stays idle.
///
/// Threads: the owner's only.
class TulNetworkSharing {
public:
    /// The running encoder; 0 is none.
    std::uint32_t encoder = 0;
    /// Where the server listens; 0 is nowhere.
    std::uint32_t port = 0;

    /// Follows the stream that has just started. Answers the port, 0 while idle.
    std::int32_t start(const TulStream& /*stream*/) { return static_cast<std::int32_t>(port); }
    void stop() { encoder = port = 0; }
    [[nodiscard]] bool isActive() const { return encoder != 0; }
};
