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

/// The source of the sync thread's events. Called on the sync thread.
class SyncEvents {
public:
    virtual ~SyncEvents() = default;
    /// True when the sync thread begins to handle events, false when it has handled all that are due.
    virtual void setBusy(bool busy) = 0;
    /// The next event posted by the mixer.
    virtual std::optional<MixEvent> takeMixedEvent() = 0;
    /// The frame of the device's timeline that is being played.
    virtual std::uint64_t playedFrame() = 0;
    /// False when the frame of the event was discarded and will not be played.
    virtual bool isCurrent(const MixEvent& event) = 0;
    /// Carries out an event, and returns the syncs to be called for it; none for a discarded event.
    virtual std::vector<Sync> takeSyncs(const MixEvent& event) = 0;
    /// False once the stream has been freed.
    virtual bool exists(std::uint32_t stream) = 0;
};

/// Calls the syncs of events when their frames are played, one at a time, in that order.
///
/// Threads: syncs are called on its own thread, "tul-sync". `wake` may be called on the audio thread, `post`
/// on any other.
class SyncThread {
public:
    explicit SyncThread(SyncEvents& events) : m_events(events) {}
    ~SyncThread() { stop(); }

    void start();
    /// No sync is called after this returns, unless it is called inside a sync.
    void stop();
    void wake() noexcept { m_wake.release(); }
    /// Adds an event that does not come from the mixer, and is due at once.
    void post(const MixEvent& event);
    /// Waits for a running sync of the stream, unless called inside a sync. `exists` must be false for the
    /// stream, so that no further sync starts.
    void finish(std::uint32_t stream);

private:
    void run(const std::stop_token& stop);
    void collect();
    void dispatchDue(std::uint64_t played);
    void dispatch(const MixEvent& event);
    void waitForNext(std::uint64_t played);

    SyncEvents& m_events;
    std::deque<MixEvent> m_pending; ///< Sync thread only.
    std::counting_semaphore<> m_wake{0};
    std::mutex m_mutex; ///< Locked before the engine's lock: `finish` must not be called under that.
    std::condition_variable m_finished;
    std::uint32_t m_calling = 0;   ///< The stream whose sync is running; guarded by m_mutex.
    std::mutex m_postedMutex;      ///< Locked last: `post` is called under other locks.
    std::deque<MixEvent> m_posted; ///< Guarded by m_postedMutex.
    std::jthread m_thread;
};

} // namespace bass
