#pragma once

#include <cstdint>
#include <string>

class TulStream;

/// Shares what the player plays with other machines: an external Vorbis encoder gets the streams one after
/// the other, and its output is served over HTTP. The encoder is the program "oggenc", from the working
/// directory, from beside the player or from PATH. Without it sharing stays idle; with its port taken it
/// encodes without listeners.
///
/// Threads: the owner's thread only.
class TulNetworkSharing {
public:
    TulNetworkSharing() = default;
    /// Stops sharing.
    ~TulNetworkSharing();
    TulNetworkSharing(const TulNetworkSharing&) = delete;
    TulNetworkSharing& operator=(const TulNetworkSharing&) = delete;

    /// The encoder (HENCODE); 0 while none has been started.
    std::uint32_t encoder = 0;
    /// The port that the server listens on; 0 while it does not.
    std::uint32_t port = 0;
    /// The last `start` found no encoder program.
    bool isEncoderMissing = false;

    /// The stream's name as sent to listeners, and the port to listen on. Used by the next start.
    std::string name = "Tulplayer";
    std::uint16_t wantedPort = 9090;

    /// Sets name and port. A new name applies to listeners that connect from now on. A new port stops the
    /// server; then true is returned, and the caller starts it again.
    [[nodiscard]] bool configure(const std::string& name, std::uint16_t port);
    /// The number of connected listeners; 0 while nothing is shared. One that disconnects is counted for
    /// about another second.
    [[nodiscard]] std::uint32_t listenerCount() const;
    /// Attaches the encoder to a stream that has just started. Starts encoder and server first if they do not
    /// run. Returns `port`.
    std::int32_t start(const TulStream& stream);
    /// Ends encoder and server, and disconnects the listeners.
    void stop();
    /// Stops sharing if the encoder has exited by itself, so that the next `start` makes a new one.
    void dropDeadEncoder();
    /// True while the encoder runs.
    [[nodiscard]] bool isActive() const;
};
