#pragma once

#include "platform/bass/Mixer.h"
#include "platform/bass/output/Output.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <semaphore>
#include <thread>

namespace bass {

/// What the device does to what is mixed. All are called on the control thread, without a lock.
class OutputEvents {
public:
    virtual ~OutputEvents() = default;
    /// The device has stopped: mixed frames past `played` on its timeline will not be played.
    virtual void rewind(std::uint64_t played) = 0;
    /// A channel is attached, and no device can be started now.
    virtual void deviceMissing() = 0;
    /// The sink that was played to is no more.
    virtual void sinkRemoved() = 0;
};

/// Runs the device while a channel is attached, restarts it where what is queued must not be played, and
/// opens it, with back-off, until there is one, and again when it is lost.
///
/// Threads: its own, "tul-control", makes every call of the device; one that a sound server leaves without an
/// answer keeps only this thread waiting. All public calls may come from any thread but the audio thread,
/// `deviceLost` and `sinkRemoved` from any at all; none of them waits for the device but `close`. Lock order:
/// the engine's lock before `m_mutex`.
class OutputControl {
public:
    OutputControl(Mixer& mixer, OutputEvents& events) : m_mixer(mixer), m_events(events) {}
    /// Waits for the control thread, for as long as that may take: see `close`.
    ~OutputControl();

    /// To be called once, before anything else. False when no device could ever be opened.
    [[nodiscard]] bool open();
    /// Stops and releases the device for good. False when a sound server does not let go of it within
    /// `limit`: then the control thread goes on waiting, and this object must never be destroyed.
    bool close(std::chrono::milliseconds limit);

    /// A channel is going to be attached: opens the device meanwhile.
    void prepare();
    /// What is queued in the device is not to be waited for at the next change. To be called before a channel
    /// is attached.
    void dropQueued();
    /// Stops the device at once (a seek, a pause, a channel freed while it plays), reports a
    /// rewind, and prepares the next start. The device starts again when a channel is attached, which may
    /// still be so.
    void flush();
    /// Attached channels came or went. After the last one has gone, what is queued is played to its end.
    void changed();
    void deviceLost();
    void sinkRemoved();
    /// New frames are there for the mixer.
    void wakeOutput();

    /// The frame of the device's timeline that is being played. Never goes back.
    std::uint64_t playedFrame();
    /// The device has been started and asks for frames.
    bool isRunning();

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds firstRetry{50};

    void run(const std::stop_token& stop);
    void update();
    void keepRunning(bool lost);
    void playOut();
    void rest(bool expected);
    bool startOutput();
    void stopOutput();
    void followThread();
    void notePlayed(); ///< With m_mutex held.

    Mixer& m_mixer;
    OutputEvents& m_events;
    std::unique_ptr<Output> m_output;

    std::mutex m_mutex;
    /// Guarded by m_mutex, as the two below. While it is false, the output is the control thread's alone.
    bool m_running = false;
    std::uint64_t m_startedAt = 0; ///< Frame of the timeline at the output's last start.
    std::uint64_t m_lastPlayed = 0;

    std::atomic<bool> m_prepare{false};
    std::atomic<bool> m_flush{false};
    std::atomic<bool> m_lost{false};
    std::atomic<bool> m_sinkRemoved{false};
    std::counting_semaphore<> m_wake{0};
    std::binary_semaphore m_ended{0};

    // The control thread's.
    pid_t m_audioThread = 0;                   ///< The one that a priority was requested for.
    std::optional<Clock::time_point> m_wakeAt; ///< None: only a change wakes it.
    std::optional<Clock::time_point> m_emptySince;
    Clock::time_point m_lastStart;
    std::chrono::milliseconds m_retry = firstRetry;

    std::jthread m_thread;
};

} // namespace bass
