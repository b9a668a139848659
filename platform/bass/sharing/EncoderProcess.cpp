#include "platform/bass/sharing/EncoderProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <utility>
#include <vector>

namespace bass {

namespace {

struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

std::optional<Pipe> makePipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
    return Pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

std::vector<std::string> words(const std::string& commandLine) {
    std::vector<std::string> found;
    std::istringstream text(commandLine);
    for (std::string word; text >> std::quoted(word);)
        found.push_back(word);
    return found;
}

class FileActions {
public:
    FileActions(int input, int output) {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_adddup2(&m_actions, input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&m_actions, output, STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&m_actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
    }
    ~FileActions() { posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions{};
};

/// Signals as a program expects them, and a process group of its own: what a terminal sends to the player is
/// not meant for the encoder.
class Attributes {
public:
    Attributes() {
        posix_spawnattr_init(&m_attributes);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        posix_spawnattr_setsigdefault(&m_attributes, &all);
        posix_spawnattr_setpgroup(&m_attributes, 0);
        posix_spawnattr_setflags(&m_attributes,
                                 POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    }
    ~Attributes() { posix_spawnattr_destroy(&m_attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes{};
};

} // namespace

std::optional<EncoderProcess> EncoderProcess::start(const std::string& commandLine) {
    std::vector<std::string> arguments = words(commandLine);
    if (arguments.empty()) return std::nullopt;
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    std::transform(arguments.begin(), arguments.end(), std::back_inserter(pointers),
                   [](std::string& argument) { return argument.data(); });
    pointers.push_back(nullptr);

    auto input = makePipe();
    auto output = makePipe();
    if (!input || !output) return std::nullopt;
    fcntl(input->writeEnd.get(), F_SETFL, O_NONBLOCK);
    fcntl(output->readEnd.get(), F_SETFL, O_NONBLOCK);

    const FileActions actions(input->readEnd.get(), output->writeEnd.get());
    const Attributes attributes;
    pid_t id = -1;
    if (posix_spawnp(&id, pointers.front(), actions.get(), attributes.get(), pointers.data(), environ) != 0)
        return std::nullopt;
    return EncoderProcess(id, std::move(input->writeEnd), std::move(output->readEnd));
}

EncoderProcess::EncoderProcess(pid_t id, FileDescriptor input, FileDescriptor output)
    : m_id(id), m_input(std::move(input)), m_output(std::move(output)) {}

EncoderProcess::EncoderProcess(EncoderProcess&& other) noexcept
    : m_id(std::exchange(other.m_id, -1)),
      m_input(std::move(other.m_input)),
      m_output(std::move(other.m_output)) {}

EncoderProcess::~EncoderProcess() {
    if (m_id < 0) return;
    kill(m_id, SIGKILL);
    while (waitpid(m_id, nullptr, 0) < 0 && errno == EINTR) {
    }
}

} // namespace bass
