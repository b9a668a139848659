#pragma once

#include "platform/bass/sharing/FileDescriptor.h"

#include <sys/types.h>

#include <optional>
#include <string>

namespace bass {

/// A running encoder program with a pipe on its standard input and one on its standard output. It inherits no
/// other descriptor, its messages are thrown away, and it ends with the object.
class EncoderProcess {
public:
    /// Nothing when the program can't be started. `commandLine` as BASS_Encode_Start tells.
    static std::optional<EncoderProcess> start(const std::string& commandLine);
    /// Kills and reaps the program.
    ~EncoderProcess();
    EncoderProcess(EncoderProcess&& other) noexcept;
    EncoderProcess& operator=(EncoderProcess&&) = delete;

    /// Our ends of the pipes, non-blocking. Writing to a program that has ended raises SIGPIPE in a thread
    /// that has not blocked it.
    int input() const { return m_input.get(); }
    int output() const { return m_output.get(); }
    pid_t id() const { return m_id; }

private:
    EncoderProcess(pid_t id, FileDescriptor input, FileDescriptor output);

    pid_t m_id;
    FileDescriptor m_input;
    FileDescriptor m_output;
};

} // namespace bass
