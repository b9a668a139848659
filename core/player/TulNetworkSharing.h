#pragma once

#include <cstdint>
#include <string>

class TulStream;

/// Lets other machines hear what the player plays: an external Vorbis encoder hears the streams one after the
/// other, and its output is served over HTTP. The encoder is the program "oggenc", from the working
/// directory, from beside the player or from PATH. Without it sharing stays idle; with its port taken it
/// encodes without listeners.
///
/// Threads: the owner's only.
class TulNetworkSharing {
public:
    TulNetworkSharing() = default;
    /// Stops.
    ~TulNetworkSharing();
    TulNetworkSharing(const TulNetworkSharing&) = delete;
    TulNetworkSharing& operator=(const TulNetworkSharing&) = delete;

    /// The encoder (HENCODE); 0 while none has been started.
    std::uint32_t encoder = 0;
    /// Where the server listens; 0 while it does not.
    std::uint32_t port = 0;
    /// The last start found no program to start.
    bool isEncoderMissing = false;

    /// What listeners are told that it is called, and where it is to be served; both hold from the next
    /// start.
    std::string name = "Tulplayer";
    std::uint16_t wantedPort = 9090;

    /// Sets both. A new name holds at once for those that connect from now on. With a new port what is shared
    /// is stopped, and true is answered: it is to be started again.
    [[nodiscard]] bool configure(const std::string& name, std::uint16_t port);
    /// How many listen now; 0 while nothing is shared. One that has left counts for a second or so.
    [[nodiscard]] std::uint32_t listenerCount() const;
    /// Follows a stream that has just started, and starts encoder and server when there is no encoder.
    /// Answers `port`.
    std::int32_t start(const TulStream& stream);
    /// Ends encoder and server, and drops the listeners. A later start makes new ones.
    void stop();
    /// Stops when the encoder has died by itself: nothing is shared then, and the next start makes a new one.
    void dropDeadEncoder();
    /// Whether the encoder runs.
    [[nodiscard]] bool isActive() const;
};
