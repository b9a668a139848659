#include "platform/bass/SyncThread.h"

#include "platform/bass/FrameFormat.h"

#include <algorithm>
#include <chrono>
#include <pthread.h>

namespace bass {
namespace {

using namespace std::chrono_literals;

/// Limits of the interval at which the device's clock is polled while an event is not yet due.
constexpr auto minWait = 2ms;
constexpr auto maxWait = 100ms;

} // namespace

void SyncThread::start() {
    m_thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

void SyncThread::stop() {
    if (!m_thread.joinable()) return;
    m_thread.request_stop();
    m_wake.release();
    m_thread.join();
}

void SyncThread::post(const MixEvent& event) {
    {
        const std::lock_guard lock(m_postedMutex);
        m_posted.push_back(event);
    }
    m_wake.release();
}

void SyncThread::finish(std::uint32_t stream) {
    if (std::this_thread::get_id() == m_thread.get_id()) return;
    std::unique_lock lock(m_mutex);
    m_finished.wait(lock, [&] { return m_calling != stream; });
}

void SyncThread::run(const std::stop_token& stop) {
    pthread_setname_np(pthread_self(), "tul-sync");
    while (!stop.stop_requested()) {
        m_events.setBusy(true);
        collect();
        const std::uint64_t played = m_events.playedFrame();
        dispatchDue(played);
        m_events.setBusy(false);
        waitForNext(played);
    }
}

void SyncThread::collect() {
    while (const auto event = m_events.takeMixedEvent())
        m_pending.push_back(*event);
    const std::lock_guard lock(m_postedMutex);
    m_pending.insert(m_pending.end(), m_posted.begin(), m_posted.end());
    m_posted.clear();
}

void SyncThread::waitForNext(std::uint64_t played) {
    if (m_pending.empty()) return m_wake.acquire();
    const auto next = std::min_element(m_pending.begin(), m_pending.end(), [](const auto& a, const auto& b) {
        return a.deviceFrame < b.deviceFrame;
    });
    const double frames = next->deviceFrame > played ? static_cast<double>(next->deviceFrame - played) : 0.0;
    const std::chrono::duration<double> due(frames / sampleRate);
    const auto wait = std::clamp(std::chrono::duration_cast<std::chrono::milliseconds>(due) + 1ms,
                                 std::chrono::milliseconds(minWait), std::chrono::milliseconds(maxWait));
    static_cast<void>(m_wake.try_acquire_for(wait));
}

void SyncThread::dispatchDue(std::uint64_t played) {
    std::deque<MixEvent> later;
    while (!m_pending.empty()) {
        const MixEvent event = m_pending.front();
        m_pending.pop_front();
        if (event.deviceFrame > played && m_events.isCurrent(event)) {
            later.push_back(event);
        } else {
            dispatch(event);
        }
    }
    m_pending = std::move(later);
}

void SyncThread::dispatch(const MixEvent& event) {
    for (const Sync& sync : m_events.takeSyncs(event)) {
        {
            const std::lock_guard lock(m_mutex);
            if (!m_events.exists(event.stream)) return;
            m_calling = event.stream;
        }
        sync.proc(sync.handle, event.stream, 0, sync.user);
        {
            const std::lock_guard lock(m_mutex);
            m_calling = 0;
        }
        m_finished.notify_all();
    }
}

} // namespace bass
