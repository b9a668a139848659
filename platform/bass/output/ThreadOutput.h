#pragma once

#include "platform/bass/output/Output.h"

#include <atomic>
#include <condition_variable>
#include <fstream>
#include <mutex>
#include <thread>

namespace bass {

/// An output without a device, on a thread of its own: silence in real time, silence as fast as it decodes,
/// or a WAV file of what would be played (32-bit float, as fast as it decodes).
class ThreadOutput : public Output {
public:
    enum class Pace { realTime, decoding };

    explicit ThreadOutput(Pace pace) : m_pace(pace) {}
    /// Null when the file cannot be made.
    static std::unique_ptr<ThreadOutput> intoWav(const std::string& path);
    ~ThreadOutput() override;

    bool prepare(Renderer& renderer) override;
    bool start() override;
    void stop() override;
    std::uint64_t playedFrames() const override;
    void wake() override;

private:
    void run(Renderer& renderer, const std::stop_token& stop);
    bool waitForTurn(const Renderer& renderer, const std::stop_token& stop);
    void append(std::span<const float> frames);

    const Pace m_pace;
    Renderer* m_renderer = nullptr;
    std::ofstream m_wav;
    std::uint64_t m_wavFrames = 0;
    std::atomic<std::uint64_t> m_rendered{0};
    std::chrono::steady_clock::time_point m_started;
    mutable std::mutex m_mutex;
    std::condition_variable_any m_wake;
    std::jthread m_thread;
};

} // namespace bass
