#pragma once

#include "platform/bass/Mixer.h"
#include "platform/bass/output/Output.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <semaphore>
#include <thread>

namespace bass {

/// Runs the device while a channel is attached, restarts it where what is queued must not be heard, and opens
/// it again, with back-off, when it is lost.
///
/// Threads: its own, "tul-control", makes every start and stop. All public calls may come from any thread but
/// the audio thread, `deviceLost` from any at all. Lock order: a channel's lock before `m_mutex`.
class OutputControl {
public:
    /// `rewind` is called on the control thread, with the device stopped, when mixed frames past the given
    /// frame of the device's timeline will not be heard.
    OutputControl(Mixer& mixer, std::function<void(std::uint64_t played)> rewind);
    ~OutputControl();

    /// To be called once, before anything else. False when there is no output.
    [[nodiscard]] bool open();

    /// Stops the device for good.
    void close();

    /// What is queued in the device is not to be waited for at the next change. To be said before a channel
    /// is attached.
    void dropQueued();
    /// Attached channels came or went.
    void changed();
    void deviceLost();
    /// New frames are there for the mixer.
    void wakeOutput();

    /// The frame of the device's timeline that is being heard. Never goes back.
    std::uint64_t playedFrame();

private:
    void run(const std::stop_token& stop);
    void noteHeard(); ///< With m_mutex held.
    void stopOutput();
    bool startOutput();

    Mixer& m_mixer;
    std::function<void(std::uint64_t)> m_rewind;
    std::unique_ptr<Output> m_output;

    std::mutex m_mutex;
    /// Guarded by m_mutex, as the two below. While it is false, the output is the control thread's alone.
    bool m_running = false;
    std::uint64_t m_startedAt = 0; ///< Frame of the timeline at the output's last start.
    std::uint64_t m_lastHeard = 0;

    std::atomic<bool> m_fresh{false};
    std::atomic<bool> m_lost{false};
    std::counting_semaphore<> m_wake{0};
    std::jthread m_thread;
};

} // namespace bass
