#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <sys/types.h>

namespace bass {

/// What an output asks for frames. Called on its audio thread, one call at a time.
class Renderer {
public:
    virtual ~Renderer() = default;
    /// Fills `out` (interleaved stereo) with what comes next.
    virtual void render(std::span<float> out) noexcept = 0;
    /// Whether `render` has `frames` frames of sound now, or nothing more to wait for. For outputs that do
    /// not run on a clock.
    virtual bool isReady(std::size_t frames) const noexcept = 0;
};

/// What happens to a device by itself. Called on any thread, also the audio thread: each only stores and
/// wakes.
struct DeviceSignals {
    std::function<void()> lost;          ///< Or another one has become the default one.
    std::function<void()> threadChanged; ///< Another thread than before asks for frames.
    std::function<void()> sinkRemoved;   ///< What is played goes on elsewhere, or is lost, too.
};

/// Where sound goes. Started and stopped by one control thread; between start and stop it asks the renderer
/// for frames.
///
/// Threads: all calls on the control thread, but for `playedFrames`, which may come from any thread that
/// keeps start and stop from running, and `wake`.
class Output {
public:
    virtual ~Output() = default;

    /// Opens the device for the next start, if it is not open for one already. May take as long as a sound
    /// server that does not answer. False when there is none now.
    [[nodiscard]] virtual bool prepare(Renderer& renderer) = 0;
    /// After `prepare`, and each time after another. False when the device is gone again.
    [[nodiscard]] virtual bool start() = 0;
    /// Drops the frames that were asked for and not played yet.
    virtual void stop() = 0;
    /// Stopped: closes the device until the next `prepare`.
    virtual void release() {}
    /// Frames played since the last start. May run ahead of the sound by as much as `queueTime`.
    [[nodiscard]] virtual std::uint64_t playedFrames() const = 0;
    /// How long it may take until what `render` gave is played.
    [[nodiscard]] virtual std::chrono::milliseconds queueTime() const { return {}; }
    /// The thread that asks for frames; 0 as long as it is not known, or needs no more than the usual
    /// priority.
    [[nodiscard]] virtual pid_t audioThread() const { return 0; }
    /// Frames may have come that `isReady` waits for. Any thread.
    virtual void wake() {}
};

} // namespace bass
