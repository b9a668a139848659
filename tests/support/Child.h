#pragma once

#include <csignal>
#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace support {

/// A program that runs beside the test and ends with this object, and with the thread that started it.
class Child {
public:
    Child() = default;
    /// Found in PATH; what it prints goes to the file. Throws std::runtime_error when it can't be started.
    explicit Child(std::vector<std::string> command, const std::filesystem::path& output = "/dev/null");
    ~Child() { end(); }
    Child(const Child&) = delete;
    Child& operator=(Child&& other) noexcept;

    /// Does nothing when it has ended.
    void end(int signal = SIGKILL);
    /// SIGSTOP leaves it there, and answering nothing, until SIGCONT.
    void signal(int number) const { kill(m_id, number); }
    /// Waits until it ends by itself; whether it says that all was well.
    [[nodiscard]] bool succeeds();

private:
    pid_t m_id = -1;
};

/// Runs a program without a shell, its output thrown away; throws std::runtime_error unless it exits with 0.
void run(const std::vector<std::string>& command);

} // namespace support
