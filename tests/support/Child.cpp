#include "tests/support/Child.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace support {

Child::Child(std::vector<std::string> command, const std::filesystem::path& output) {
    command.insert(command.begin(), {"setpriv", "--pdeathsig", "KILL"});
    std::vector<char*> arguments;
    for (auto& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    const int failure = posix_spawnp(&m_id, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) throw std::runtime_error("cannot start " + command[3]);
}

Child& Child::operator=(Child&& other) noexcept {
    std::swap(m_id, other.m_id);
    return *this;
}

void Child::end(int signal) {
    if (m_id <= 0) return;
    kill(m_id, signal);
    waitpid(m_id, nullptr, 0);
    m_id = -1;
}

bool Child::succeeds() {
    int status = -1;
    return waitpid(std::exchange(m_id, -1), &status, 0) > 0 && status == 0;
}

void run(const std::vector<std::string>& command) {
    if (!Child(command).succeeds()) throw std::runtime_error("failed: " + command.front());
}

} // namespace support
