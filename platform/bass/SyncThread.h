#pragma once

#include "platform/bass/Mixer.h"
#include "platform/bass/output/OutputControl.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <semaphore>
#include <thread>

namespace bass {

class Channel;

/// Calls the syncs of mixed events when they are heard, one at a time, in that order.
///
/// Threads: its own, "tul-sync", makes the calls. `wake` may come from the audio thread. `finish` waits for a
/// call that is under way for a channel, except on the sync thread itself.
class SyncThread {
public:
    using Find = std::function<std::shared_ptr<Channel>(std::uint32_t handle)>;

    /// `find` answers null for a channel that was freed.
    SyncThread(Mixer& mixer, OutputControl& output, Find find);
    ~SyncThread();

    void start();
    void wake() noexcept { m_wake.release(); }
    /// Returns when no sync of this channel, which `find` must not answer any more, runs or will.
    void finish(std::uint32_t channel);

private:
    void run(const std::stop_token& stop);
    void dispatchDue(std::uint64_t heard);
    void dispatch(const MixEvent& event, Channel& channel);
    void waitForNext(std::uint64_t heard);

    Mixer& m_mixer;
    OutputControl& m_output;
    Find m_find;
    std::deque<MixEvent> m_pending; ///< The sync thread's.
    std::counting_semaphore<> m_wake{0};
    std::mutex m_mutex;
    std::condition_variable m_finished;
    std::uint32_t m_calling = 0; ///< The channel whose sync is running; guarded by m_mutex.
    std::jthread m_thread;
};

} // namespace bass
