#pragma once

#include "platform/bass/MixEvent.h"
#include "platform/bass/Sync.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <semaphore>
#include <thread>
#include <vector>

namespace bass {

/// Where the sync thread gets its work from. Called on the sync thread.
class SyncEvents {
public:
    virtual ~SyncEvents() = default;
    /// The sync thread begins to handle events, or has handled all that are due.
    virtual void setBusy(bool busy) = 0;
    /// The next event that was mixed.
    virtual std::optional<MixEvent> takeMixedEvent() = 0;
    /// The frame of the device's timeline that is being played.
    virtual std::uint64_t playedFrame() = 0;
    /// Whether the frame that the event belongs to will still be played.
    virtual bool isCurrent(const MixEvent& event) = 0;
    /// Carries out an event, and answers the syncs to be called for it; none for a discarded one.
    virtual std::vector<Sync> takeSyncs(const MixEvent& event) = 0;
    /// False once the stream has been freed.
    virtual bool exists(std::uint32_t stream) = 0;
};

/// Calls the syncs of events when they are played, one at a time, in that order.
///
/// Threads: its own, "tul-sync", makes the calls. `wake` may come from the audio thread, `post` from any
/// other. `finish` waits for a call that is under way for a stream, except on the sync thread itself.
class SyncThread {
public:
    explicit SyncThread(SyncEvents& events) : m_events(events) {}
    ~SyncThread() { stop(); }

    void start();
    /// No sync is called after this, except by the sync thread itself.
    void stop();
    void wake() noexcept { m_wake.release(); }
    /// An event that the mixer has no part in: due at once.
    void post(const MixEvent& event);
    /// Returns when no sync of this stream, which `exists` must not confirm any more, runs or will.
    void finish(std::uint32_t stream);

private:
    void run(const std::stop_token& stop);
    void collect();
    void dispatchDue(std::uint64_t played);
    void dispatch(const MixEvent& event);
    void waitForNext(std::uint64_t played);

    SyncEvents& m_events;
    std::deque<MixEvent> m_pending; ///< The sync thread's.
    std::counting_semaphore<> m_wake{0};
    std::mutex m_mutex; ///< Taken before the engine's lock, so `finish` is called without that.
    std::condition_variable m_finished;
    std::uint32_t m_calling = 0;   ///< The stream whose sync is running; guarded by m_mutex.
    std::mutex m_postedMutex;      ///< Taken last: `post` is called under other locks.
    std::deque<MixEvent> m_posted; ///< Guarded by m_postedMutex.
    std::jthread m_thread;
};

} // namespace bass
