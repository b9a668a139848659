#include "platform/bass/SyncThread.h"

#include "platform/bass/Channel.h"

#include <algorithm>
#include <chrono>
#include <pthread.h>

namespace bass {
namespace {

using namespace std::chrono_literals;

/// A device that stands still, or a clock that runs a little off, is looked at again this often.
constexpr auto shortestWait = 2ms;
constexpr auto longestWait = 100ms;

} // namespace

SyncThread::SyncThread(Mixer& mixer, OutputControl& output, Find find)
    : m_mixer(mixer), m_output(output), m_find(std::move(find)) {}

SyncThread::~SyncThread() {
    if (!m_thread.joinable()) return;
    m_thread.request_stop();
    m_wake.release();
    m_thread.join();
}

void SyncThread::start() {
    m_thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

void SyncThread::finish(std::uint32_t channel) {
    if (std::this_thread::get_id() == m_thread.get_id()) return;
    std::unique_lock lock(m_mutex);
    m_finished.wait(lock, [&] { return m_calling != channel; });
}

void SyncThread::run(const std::stop_token& stop) {
    pthread_setname_np(pthread_self(), "tul-sync");
    while (!stop.stop_requested()) {
        while (const auto event = m_mixer.takeEvent())
            m_pending.push_back(*event);
        const std::uint64_t heard = m_output.heardFrame();
        dispatchDue(heard);
        waitForNext(heard);
    }
}

void SyncThread::waitForNext(std::uint64_t heard) {
    if (m_pending.empty()) return m_wake.acquire();
    const auto next = std::min_element(m_pending.begin(), m_pending.end(), [](const auto& a, const auto& b) {
        return a.deviceFrame < b.deviceFrame;
    });
    const double frames = next->deviceFrame > heard ? static_cast<double>(next->deviceFrame - heard) : 0.0;
    const std::chrono::duration<double> due(frames / sampleRate);
    const auto wait = std::clamp(std::chrono::duration_cast<std::chrono::milliseconds>(due) + 1ms,
                                 shortestWait, longestWait);
    static_cast<void>(m_wake.try_acquire_for(wait));
}

void SyncThread::dispatchDue(std::uint64_t heard) {
    std::deque<MixEvent> later;
    while (!m_pending.empty()) {
        const MixEvent event = m_pending.front();
        m_pending.pop_front();
        const auto channel = m_find(event.channel);
        if (!channel) continue;
        if (event.deviceFrame > heard && channel->isCurrent(event)) {
            later.push_back(event);
        } else {
            dispatch(event, *channel);
        }
    }
    m_pending = std::move(later);
}

void SyncThread::dispatch(const MixEvent& event, Channel& channel) {
    for (const Sync& sync : channel.takeSyncs(event)) {
        {
            const std::lock_guard lock(m_mutex);
            if (!m_find(event.channel)) return;
            m_calling = event.channel;
        }
        sync.proc(sync.handle, event.channel, 0, sync.user);
        {
            const std::lock_guard lock(m_mutex);
            m_calling = 0;
        }
        m_finished.notify_all();
    }
}

} // namespace bass
