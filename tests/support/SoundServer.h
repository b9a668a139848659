#pragma once

#include "tests/support/Child.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace support {

/// A PulseAudio server for this process with one null sink, recorded from the start. HOME, XDG_RUNTIME_DIR
/// and PULSE_SERVER are set for this process: make it before anything looks for a sound device. The children
/// end with the object, and with this process. Throws std::runtime_error when one can't be started.
class SoundServer {
public:
    SoundServer();

    /// Ends the server as a crash does, by SIGKILL. The recording stays until `restart`.
    void crash();
    /// Starts it again on the same socket, with a new recording that runs before a player can connect.
    void restart();

    /// Stops and continues the server's process; a stopped server does not respond.
    void freeze(bool frozen) const { m_server.signal(frozen ? SIGSTOP : SIGCONT); }

    /// Another null sink, which is not recorded. Answers the name of its module, for `control`.
    std::string addSink(const std::string& name) const;
    /// Has pactl do this, and answers what it says.
    std::string control(std::vector<std::string> command) const;

    /// The recording so far: interleaved 16-bit stereo at 44100 Hz.
    std::vector<std::int16_t> recorded() const;
    /// The number of streams that play to the sink.
    std::size_t playingStreams() const;

private:
    void start();

    std::filesystem::path m_folder;
    std::string m_control; ///< The address for the tools; the player's opens after the recorder runs.
    std::filesystem::path m_recording;
    Child m_server;
    Child m_recorder;
};

} // namespace support
