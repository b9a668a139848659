#pragma once

#include <csignal>
#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace support {

/// A child process. It ends with this object, and with the thread that started it.
class Child {
public:
    Child() = default;
    /// Searches PATH; redirects the output to a file. Throws std::runtime_error when it cannot be started.
    explicit Child(std::vector<std::string> command, const std::filesystem::path& output = "/dev/null");
    ~Child() { end(); }
    Child(const Child&) = delete;
    Child& operator=(Child&& other) noexcept;

    /// Does nothing when the process has ended.
    void end(int signal = SIGKILL);
    /// SIGSTOP suspends the process until SIGCONT.
    void signal(int number) const { kill(m_id, number); }
    /// Waits until the process exits; true for status 0.
    [[nodiscard]] bool succeeds();

private:
    pid_t m_id = -1;
};

/// Runs a program without a shell and discards its output. Throws std::runtime_error unless it exits with 0.
void run(const std::vector<std::string>& command);

} // namespace support
