#include "platform/bass/output/OutputControl.h"

#include "platform/bass/output/CubebOutput.h"
#include "platform/bass/output/ThreadOutput.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <pthread.h>
#include <string_view>

namespace bass {
namespace {

using namespace std::chrono_literals;

using Clock = std::chrono::steady_clock;

constexpr auto firstRetry = 50ms;
constexpr auto longestRetry = 2000ms;

std::unique_ptr<Output> openOutput(std::function<void()> onFailure) {
    const char* replacement = std::getenv("TUL_AUDIO");
    if (!replacement || !*replacement) return CubebOutput::open(std::move(onFailure));
    const std::string_view name = replacement;
    if (name == "null") return std::make_unique<ThreadOutput>(ThreadOutput::Pace::realTime);
    if (name == "fast") return std::make_unique<ThreadOutput>(ThreadOutput::Pace::decoding);
    if (name.starts_with("wav:")) return ThreadOutput::intoWav(std::string(name.substr(4)));
    return nullptr;
}

} // namespace

OutputControl::OutputControl(Mixer& mixer, std::function<void(std::uint64_t)> rewind)
    : m_mixer(mixer), m_rewind(std::move(rewind)) {}

OutputControl::~OutputControl() {
    close();
}

void OutputControl::close() {
    if (!m_thread.joinable()) return;
    m_thread.request_stop();
    m_wake.release();
    m_thread.join();
    if (m_output) m_output->stop();
}

bool OutputControl::open() {
    m_output = openOutput([this] { deviceLost(); });
    if (!m_output) return false;
    m_thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
    return true;
}

void OutputControl::dropQueued() {
    m_fresh = true;
}

void OutputControl::changed() {
    m_wake.release();
}

void OutputControl::deviceLost() {
    m_lost = true;
    m_wake.release();
}

void OutputControl::wakeOutput() {
    if (m_output) m_output->wake();
}

std::uint64_t OutputControl::playedFrame() {
    const std::lock_guard lock(m_mutex);
    if (m_running) noteHeard();
    return m_lastHeard;
}

void OutputControl::noteHeard() {
    const std::uint64_t played = m_startedAt + m_output->playedFrames();
    m_lastHeard = std::max(m_lastHeard, std::min(played, m_mixer.mixedFrames()));
}

void OutputControl::run(const std::stop_token& stop) {
    pthread_setname_np(pthread_self(), "tul-control");
    auto retry = firstRetry;
    auto lastStart = Clock::time_point();
    bool waiting = false;
    while (true) {
        if (waiting) {
            static_cast<void>(m_wake.try_acquire_for(retry));
        } else {
            m_wake.acquire();
        }
        if (stop.stop_requested()) return;
        const bool fresh = m_fresh.exchange(false);
        const bool lost = m_lost.exchange(false);
        const bool wanted = m_mixer.attachedCount() > 0;
        if (fresh || lost || !wanted) stopOutput();
        // A device that is lost as soon as it runs is waited for, as one that does not open.
        const bool tooSoon = lost && Clock::now() < lastStart + longestRetry;
        waiting = wanted && (tooSoon || !startOutput());
        if (waiting) {
            retry = std::min(retry * 2, longestRetry);
        } else if (Clock::now() > lastStart + longestRetry) {
            retry = firstRetry;
        }
        if (!waiting) lastStart = Clock::now();
    }
}

void OutputControl::stopOutput() {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_running) return;
        noteHeard();
        m_running = false;
    }
    // Unlocked: who asks for the position does not wait for a server that does not answer.
    m_output->stop();
    std::uint64_t heard = 0;
    {
        const std::lock_guard lock(m_mutex);
        noteHeard(); // an output without a queue has been heard as far as it was filled
        heard = m_lastHeard;
    }
    m_rewind(heard);
}

bool OutputControl::startOutput() {
    {
        const std::lock_guard lock(m_mutex);
        if (m_running) return true;
    }
    // Unlocked: who asks for the position does not wait for a device that is slow to open.
    if (!m_output->prepare(m_mixer)) return false;
    const std::lock_guard lock(m_mutex);
    m_startedAt = m_mixer.mixedFrames();
    m_running = m_output->start();
    return m_running;
}

} // namespace bass
