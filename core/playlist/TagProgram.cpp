#include "core/playlist/TagProgram.h"

#include "core/background/besideProgram.h"
#include "core/files/FileDescriptor.h"
#include "core/playlist/resolveEntrySource.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <memory>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>

namespace tags {
namespace {

/// A running process of the program, with a socket as its standard input. It inherits no other descriptors
/// than standard output and error.
class Program {
public:
    /// Null when the program cannot be started.
    static std::unique_ptr<Program> start();
    /// Kills and reaps the process.
    ~Program() {
        ::kill(m_id, SIGKILL);
        while (::waitpid(m_id, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    [[nodiscard]] int socket() const { return m_socket.get(); }

private:
    Program(pid_t id, int socket) : m_id(id), m_socket(socket) {}

    const pid_t m_id;
    const FileDescriptor m_socket;
};

std::unique_ptr<Program> Program::start() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return nullptr;
    const FileDescriptor itsEnd(ends[1]);
    std::string path = besideProgram("tulplayer-tags");
    std::array<char*, 2> arguments{path.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, itsEnd.get(), STDIN_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    pid_t id = -1;
    const int failed = ::posix_spawn(&id, path.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed == 0) return std::unique_ptr<Program>(new Program(id, ends[0]));
    ::close(ends[0]);
    return nullptr;
}

} // namespace

Message ask(Question question, const std::string& source) {
    if (isAddress(source)) return {};
    thread_local std::unique_ptr<Program> program;
    const std::string message = static_cast<char>(question) + source;
    // The process may have been killed since the last question.
    if (!program || !send(program->socket(), message)) {
        program.reset();
        program = Program::start();
        if (!program || !send(program->socket(), message)) return {};
    }
    std::optional<Message> answer = receive(program->socket());
    if (!answer) program.reset();
    return std::move(answer).value_or(Message());
}

} // namespace tags
