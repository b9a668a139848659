#include "platform/bass/output/ThreadOutput.h"

#include "platform/bass/FrameFormat.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <pthread.h>

namespace bass {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t chunkFrames = 441; // 10 ms
constexpr auto chunkTime = 10ms;
constexpr std::streamoff wavHeaderBytes = 44;

void put(std::ostream& out, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out.put(static_cast<char>(value >> (8 * i)));
}

void putHeader(std::ostream& out, std::uint64_t frames) {
    constexpr int bytesPerFrame = channelCount * 4;
    constexpr int ieeeFloat = 3;
    const std::uint64_t bytes = frames * bytesPerFrame;
    out << "RIFF";
    put(out, 36 + bytes, 4);
    out << "WAVEfmt ";
    put(out, 16, 4);
    put(out, ieeeFloat, 2);
    put(out, channelCount, 2);
    put(out, sampleRate, 4);
    put(out, std::uint64_t{sampleRate} * bytesPerFrame, 4);
    put(out, bytesPerFrame, 2);
    put(out, 32, 2);
    out << "data";
    put(out, bytes, 4);
}

} // namespace

std::unique_ptr<ThreadOutput> ThreadOutput::intoWav(const std::string& path) {
    auto output = std::make_unique<ThreadOutput>(Pace::decoding);
    output->m_wav.open(path, std::ios::binary | std::ios::trunc);
    if (!output->m_wav) return nullptr;
    putHeader(output->m_wav, 0);
    return output;
}

ThreadOutput::~ThreadOutput() {
    ThreadOutput::stop();
}

bool ThreadOutput::prepare(Renderer& renderer) {
    stop();
    m_renderer = &renderer;
    return true;
}

bool ThreadOutput::start() {
    m_rendered = 0;
    m_started = std::chrono::steady_clock::now();
    m_thread = std::jthread([this](const std::stop_token& token) { run(*m_renderer, token); });
    return true;
}

void ThreadOutput::stop() {
    if (!m_thread.joinable()) return;
    m_thread.request_stop();
    m_thread.join();
    if (!m_wav.is_open()) return;
    m_wav.seekp(0);
    putHeader(m_wav, m_wavFrames);
    m_wav.seekp(wavHeaderBytes + static_cast<std::streamoff>(m_wavFrames * channelCount * sizeof(float)));
    m_wav.flush();
}

std::uint64_t ThreadOutput::playedFrames() const {
    const std::uint64_t rendered = m_rendered.load();
    if (m_pace == Pace::decoding) return rendered;
    const auto elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_started);
    return std::min(rendered, static_cast<std::uint64_t>(elapsed.count() * sampleRate));
}

void ThreadOutput::wake() {
    const std::lock_guard lock(m_mutex);
    m_wake.notify_all();
}

void ThreadOutput::run(Renderer& renderer, const std::stop_token& stop) {
    pthread_setname_np(pthread_self(), "tul-output");
    std::array<float, chunkFrames * channelCount> chunk;
    while (waitForTurn(renderer, stop)) {
        m_rendered += chunkFrames; // before: what is mixed counts as played from the same moment on
        renderer.render(chunk);
        if (m_wav.is_open()) append(chunk);
    }
}

bool ThreadOutput::waitForTurn(const Renderer& renderer, const std::stop_token& stop) {
    std::unique_lock lock(m_mutex);
    if (m_pace == Pace::decoding) {
        while (!stop.stop_requested() && !renderer.isReady(chunkFrames)) {
            m_wake.wait_for(lock, stop, chunkTime, [&] { return renderer.isReady(chunkFrames); });
        }
    } else {
        const auto due = m_started + m_rendered.load() / chunkFrames * chunkTime;
        m_wake.wait_until(lock, stop, due, [] { return false; });
    }
    return !stop.stop_requested();
}

void ThreadOutput::append(std::span<const float> frames) {
    m_wav.write(reinterpret_cast<const char*>(frames.data()),
                static_cast<std::streamsize>(frames.size_bytes()));
    m_wavFrames += frames.size() / channelCount;
}

} // namespace bass
