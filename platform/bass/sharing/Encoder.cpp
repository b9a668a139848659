#include "platform/bass/sharing/Encoder.h"

#include "platform/bass/Taps.h"
#include "platform/bass/sharing/OggPageReader.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

namespace bass {

namespace {

/// How often new samples are looked for.
constexpr int turnMs = 40;
constexpr std::size_t chunkFrames = 8192;
constexpr std::size_t maxNameBytes = 200;

/// Writing to a program that has ended is an error here, not the end of the player.
void blockBrokenPipeSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

/// What would end a header of HTTP, and the like.
bool isControl(char character) {
    return static_cast<unsigned char>(character) < ' ' || character == '\x7f';
}

/// A byte of UTF-8 that no character begins with.
bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

bool isTransient(int error) {
    return error == EAGAIN || error == EINTR;
}

} // namespace

Encoder::Encoder(EncoderProcess process, std::uint32_t channel)
    : m_process(std::move(process)),
      m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_feed(SampleFeed::Clock::now()),
      m_thread([this](const std::stop_token& stop) { run(stop); }) {
    follow(channel);
}

Encoder::~Encoder() {
    removeTap(m_feed);
    m_thread.request_stop();
    eventfd_write(m_wake.get(), 1);
    m_thread.join();
}

bool Encoder::follow(std::uint32_t channel) {
    const std::lock_guard lock(m_mutex);
    if (hasTap(channel, m_feed)) return true; // it follows the former one without a gap
    removeTap(m_feed);
    m_feed.follow();
    return setTap(channel, m_feed);
}

std::uint16_t Encoder::serve(std::uint16_t port, std::size_t burst) {
    const std::lock_guard lock(m_mutex);
    if (m_server) return 0;
    m_pages.setBurst(burst);
    m_server = ListenerServer::open(port, m_pages);
    return m_server ? m_server->port() : 0;
}

void Encoder::setName(std::string_view name) {
    std::size_t size = std::min(name.size(), maxNameBytes);
    while (size > 0 && size < name.size() && isContinuation(name[size]))
        --size;
    std::string line(name.substr(0, size));
    std::replace_if(line.begin(), line.end(), isControl, ' ');
    m_pages.setName(std::move(line));
}

unsigned Encoder::listenerCount() const {
    const std::lock_guard lock(m_mutex);
    return m_server ? m_server->listenerCount() : 0;
}

void Encoder::run(const std::stop_token& stop) {
    pthread_setname_np(pthread_self(), "tul-encoder");
    blockBrokenPipeSignal();
    OggPageReader reader([this](OggPageReader::Page page) {
        page.isHeader ? m_pages.addHeader(std::move(page.bytes)) : m_pages.add(std::move(page.bytes));
    });
    while (!stop.stop_requested()) {
        if (!writeSamples()) break;
        const bool pending = !m_samples.empty();
        std::array<pollfd, 3> waiting{{{m_process.output(), POLLIN, 0},
                                       {m_wake.get(), POLLIN, 0},
                                       {pending ? m_process.input() : -1, POLLOUT, 0}}};
        poll(waiting.data(), waiting.size(), pending ? -1 : turnMs);
        if (waiting[0].revents != 0 && !readPages(reader)) break;
    }
    m_ended = true;
    m_pages.end();
    wakeListeners();
}

/// False when the program does not read any more.
bool Encoder::writeSamples() {
    if (m_samples.empty()) {
        m_samples.resize(chunkFrames * 2);
        m_samples.resize(m_feed.take(m_samples, SampleFeed::Clock::now()) * 2);
        m_written = 0;
    }
    const auto bytes = std::as_bytes(std::span(m_samples)).subspan(m_written);
    if (bytes.empty()) return true;
    const ssize_t written = write(m_process.input(), bytes.data(), bytes.size());
    if (written < 0) return isTransient(errno);
    m_written += static_cast<std::size_t>(written);
    if (static_cast<std::size_t>(written) == bytes.size()) m_samples.clear();
    return true;
}

/// False when the stream has ended.
bool Encoder::readPages(OggPageReader& reader) {
    std::array<std::byte, 16384> buffer;
    const ssize_t count = read(m_process.output(), buffer.data(), buffer.size());
    if (count < 0) return isTransient(errno);
    if (count == 0 || !reader.read(std::span(buffer).first(static_cast<std::size_t>(count)))) return false;
    m_pages.setBitsPerSecond(reader.bitsPerSecond());
    wakeListeners();
    return true;
}

void Encoder::wakeListeners() {
    const std::lock_guard lock(m_mutex);
    if (m_server) m_server->wake();
}

} // namespace bass
