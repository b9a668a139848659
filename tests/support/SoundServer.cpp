#include "tests/support/SoundServer.h"

#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace support {

SoundServer::SoundServer() : m_folder(scratch() / "sound-server"), m_recording(m_folder / "recorded.raw") {
    std::filesystem::create_directories(m_folder);
    std::filesystem::permissions(m_folder, std::filesystem::perms::owner_all);
    m_control = "unix:" + (m_folder / "control.sock").string();
    setenv("HOME", m_folder.c_str(), 1);
    setenv("XDG_RUNTIME_DIR", m_folder.c_str(), 1);
    setenv("PULSE_SERVER", ("unix:" + (m_folder / "player.sock").string()).c_str(), 1);
    start();
}

void SoundServer::crash() {
    m_server.end();
    m_recorder.end();
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
    // With the priority that desktops give it, where this process may: its own underruns are not the subject.
    m_server = Child({"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
                      "--realtime=yes", "--high-priority=yes", "-L",
                      "module-native-protocol-unix " + socket("control.sock"), "-L",
                      "module-null-sink sink_name=null rate=44100 norewinds=1"},
                     m_folder / "server.log");
    if (!waitFor([&] { return Child({"pactl", "-s", m_control, "info"}).succeeds(); }, limit))
        throw std::runtime_error("no sound server: " + readFile(m_folder / "server.log"));
    m_recorder = Child({"parec", "-s", m_control, "-d", "null.monitor", "--rate=44100", "--format=s16le",
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

std::string SoundServer::addSink(const std::string& name) const {
    return control({"load-module", "module-null-sink", "sink_name=" + name, "norewinds=1"});
}

std::string SoundServer::control(std::vector<std::string> command) const {
    const auto answer = m_folder / "answer";
    command.insert(command.begin(), {"pactl", "-s", m_control});
    if (!Child(std::move(command), answer).succeeds()) throw std::runtime_error("pactl failed");
    std::string text = readFile(answer);
    if (text.ends_with('\n')) text.pop_back();
    return text;
}

std::size_t SoundServer::playingStreams() const {
    const std::string lines = control({"list", "short", "sink-inputs"});
    return static_cast<std::size_t>(std::ranges::count(lines, '\n')) + (lines.empty() ? 0 : 1);
}

} // namespace support
