#include "platform/bass/output/OutputControl.h"

#include "platform/bass/output/CubebOutput.h"
#include "platform/bass/output/RealTime.h"
#include "platform/bass/output/ThreadOutput.h"

#include <algorithm>
#include <cstdlib>
#include <pthread.h>
#include <string_view>

namespace bass {
namespace {

using namespace std::chrono_literals;

constexpr auto maxRetry = 1000ms;
/// A device that is lost so soon after its start is retried with back-off, as one that does not open.
constexpr auto unstableTime = 2000ms;
/// A prepared device that is not started is kept for this long: a seek or a skip takes less.
constexpr auto keepPrepared = 1000ms;

std::unique_ptr<Output> makeOutput(DeviceSignals signals) {
    const char* replacement = std::getenv("TUL_AUDIO");
    if (!replacement || !*replacement) return std::make_unique<CubebOutput>(std::move(signals));
    const std::string_view name = replacement;
    if (name == "null") return std::make_unique<ThreadOutput>(ThreadOutput::Pace::realTime);
    if (name == "fast") return std::make_unique<ThreadOutput>(ThreadOutput::Pace::decoding);
    if (name.starts_with("wav:")) return ThreadOutput::intoWav(std::string(name.substr(4)));
    return nullptr;
}

} // namespace

OutputControl::~OutputControl() {
    if (!m_thread.joinable()) return;
    m_thread.request_stop();
    m_wake.release();
    m_thread.join();
}

bool OutputControl::open() {
    m_output = makeOutput({.lost = [this] { deviceLost(); },
                           .threadChanged = [this] { m_wake.release(); },
                           .sinkRemoved = [this] { sinkRemoved(); }});
    if (!m_output) return false;
    m_thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
    return true;
}

bool OutputControl::close(std::chrono::milliseconds limit) {
    if (!m_thread.joinable()) return true;
    m_thread.request_stop();
    m_wake.release();
    if (!m_ended.try_acquire_for(limit)) return false;
    m_thread.join();
    return true;
}

void OutputControl::prepare() {
    m_prepare = true;
    m_wake.release();
}

void OutputControl::dropQueued() {
    m_flush = true;
}

void OutputControl::flush() {
    m_flush = true;
    m_wake.release();
}

void OutputControl::changed() {
    m_wake.release();
}

void OutputControl::deviceLost() {
    m_lost = true;
    m_wake.release();
}

void OutputControl::sinkRemoved() {
    m_sinkRemoved = true;
    m_wake.release();
}

void OutputControl::wakeOutput() {
    if (m_output) m_output->wake();
}

std::uint64_t OutputControl::playedFrame() {
    const std::lock_guard lock(m_mutex);
    if (m_running) notePlayed();
    return m_lastPlayed;
}

bool OutputControl::isRunning() {
    const std::lock_guard lock(m_mutex);
    return m_running;
}

void OutputControl::notePlayed() {
    const std::uint64_t played = m_startedAt + m_output->playedFrames();
    m_lastPlayed = std::max(m_lastPlayed, std::min(played, m_mixer.mixedFrames()));
}

// ---- control thread ----

void OutputControl::run(const std::stop_token& stop) {
    pthread_setname_np(pthread_self(), "tul-control");
    while (true) {
        if (m_wakeAt) {
            static_cast<void>(m_wake.try_acquire_until(*m_wakeAt));
        } else {
            m_wake.acquire();
        }
        if (stop.stop_requested()) break;
        m_wakeAt.reset();
        update();
    }
    stopOutput();
    m_output->release();
    m_ended.release();
}

void OutputControl::update() {
    const bool flush = m_flush.exchange(false);
    const bool lost = m_lost.exchange(false);
    const bool expected = m_prepare.exchange(false) || flush;
    followThread();
    if (m_sinkRemoved.exchange(false)) m_events.sinkRemoved();
    if (flush || lost) stopOutput();
    if (lost) m_output->release();
    if (m_mixer.attachedCount() > 0) return keepRunning(lost);
    m_running ? playOut() : rest(expected);
}

void OutputControl::followThread() {
    const pid_t thread = m_output->audioThread();
    if (thread != 0 && thread != m_audioThread) requestRealTime(thread);
    m_audioThread = thread;
}

void OutputControl::keepRunning(bool lost) {
    m_emptySince.reset();
    const bool unstable = lost && Clock::now() < m_lastStart + unstableTime;
    if (!unstable && startOutput()) return;
    m_events.deviceMissing();
    m_wakeAt = Clock::now() + m_retry;
    m_retry = std::min<std::chrono::milliseconds>(m_retry * 2, maxRetry);
}

/// The played position that ended the last channel may be ahead of the sound.
void OutputControl::playOut() {
    const auto now = Clock::now();
    if (!m_emptySince) m_emptySince = now;
    const auto end = *m_emptySince + m_output->queueTime();
    if (now < end) {
        m_wakeAt = end;
        return;
    }
    m_emptySince.reset();
    stopOutput();
    m_output->release();
}

void OutputControl::rest(bool expected) {
    const auto now = Clock::now();
    if (expected && m_output->prepare(m_mixer)) m_emptySince = now;
    if (!m_emptySince) return;
    const auto end = *m_emptySince + keepPrepared;
    if (now < end) {
        m_wakeAt = end;
        return;
    }
    m_emptySince.reset();
    m_output->release();
}

bool OutputControl::startOutput() {
    if (m_running) return true;
    // Both unlocked: who asks for the position does not wait for a device that is slow to open.
    if (!m_output->prepare(m_mixer)) return false;
    const std::uint64_t mixed = m_mixer.mixedFrames();
    if (!m_output->start()) {
        m_output->release();
        m_events.rewind(playedFrame()); // it may have asked for frames before it failed
        return false;
    }
    const auto now = Clock::now();
    if (now > m_lastStart + unstableTime) m_retry = firstRetry;
    m_lastStart = now;
    const std::lock_guard lock(m_mutex);
    m_startedAt = mixed;
    m_running = true;
    return true;
}

void OutputControl::stopOutput() {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_running) return;
        notePlayed();
        m_running = false;
    }
    // Unlocked: who asks for the position does not wait for a server that does not answer.
    m_output->stop();
    std::uint64_t played = 0;
    {
        const std::lock_guard lock(m_mutex);
        notePlayed(); // an output without a queue has played as far as it was filled
        played = m_lastPlayed;
    }
    m_events.rewind(played);
}

} // namespace bass
