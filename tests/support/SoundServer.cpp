#include "tests/support/SoundServer.h"

#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace support {
namespace {

/// Starts a program that ends with this process; its output goes to a file.
pid_t spawn(std::vector<std::string> command, const std::filesystem::path& output) {
    command.insert(command.begin(), {"setpriv", "--pdeathsig", "KILL"});
    std::vector<char*> arguments;
    for (auto& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    pid_t child = -1;
    const int failure = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) throw std::runtime_error("cannot start " + command[3]);
    return child;
}

void end(pid_t& child) {
    if (child <= 0) return;
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    child = -1;
}

bool succeeds(const std::vector<std::string>& command) {
    try {
        run(command);
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
}

} // namespace

SoundServer::SoundServer() : m_folder(scratch() / "sound-server"), m_recording(m_folder / "recorded.raw") {
    std::filesystem::create_directories(m_folder);
    std::filesystem::permissions(m_folder, std::filesystem::perms::owner_all);
    m_control = "unix:" + (m_folder / "control.sock").string();
    setenv("HOME", m_folder.c_str(), 1);
    setenv("XDG_RUNTIME_DIR", m_folder.c_str(), 1);
    setenv("PULSE_SERVER", ("unix:" + (m_folder / "player.sock").string()).c_str(), 1);
    start();
}

SoundServer::~SoundServer() {
    end(m_recorder);
    end(m_server);
}

void SoundServer::crash() {
    end(m_server);
    end(m_recorder);
}

void SoundServer::restart() {
    crash();
    start();
}

void SoundServer::start() {
    constexpr auto limit = std::chrono::seconds(30);
    std::filesystem::remove(m_recording);
    const auto socket = [&](const char* name) {
        return "socket=" + (m_folder / name).string() + " auth-anonymous=1";
    };
    m_server = spawn({"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
                      "--realtime=no", "--high-priority=no", "-L",
                      "module-native-protocol-unix " + socket("control.sock"), "-L",
                      "module-null-sink sink_name=null rate=44100 norewinds=1"},
                     m_folder / "server.log");
    if (!waitFor([&] { return succeeds({"pactl", "-s", m_control, "info"}); }, limit))
        throw std::runtime_error("no sound server: " + readFile(m_folder / "server.log"));
    m_recorder = spawn({"parec", "-s", m_control, "-d", "null.monitor", "--rate=44100", "--format=s16le",
                        "--channels=2", "--latency-msec=20", m_recording.string()},
                       m_folder / "recorder.log");
    if (!waitFor([&] { return !recorded().empty(); }, limit))
        throw std::runtime_error("no recording: " + readFile(m_folder / "recorder.log"));
    run({"pactl", "-s", m_control, "load-module", "module-native-protocol-unix", socket("player.sock")});
}

std::vector<std::int16_t> SoundServer::recorded() const {
    if (!std::filesystem::exists(m_recording)) return {};
    const std::string bytes = readFile(m_recording);
    std::vector<std::int16_t> samples(bytes.size() / 4 * 2);
    if (!samples.empty()) std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(std::int16_t));
    return samples;
}

std::size_t SoundServer::playingStreams() const {
    const auto list = m_folder / "streams";
    pid_t tool = spawn({"pactl", "-s", m_control, "list", "short", "sink-inputs"}, list);
    int status = 0;
    waitpid(tool, &status, 0);
    if (status != 0) throw std::runtime_error("pactl failed");
    const std::string lines = readFile(list);
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), '\n'));
}

} // namespace support
