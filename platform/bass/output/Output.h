#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

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

/// Where sound goes. Started and stopped by one control thread; between start and stop it asks the renderer
/// for frames.
///
/// Threads: prepare, start, stop and the destructor on the control thread; `playedFrames` from any thread
/// that keeps start and stop from running; `onFailure` (given at creation) is called on any thread and only
/// stores and wakes.
class Output {
public:
    virtual ~Output() = default;

    /// Opens the device, which may take seconds, and asks for nothing yet. False when it is not there.
    [[nodiscard]] virtual bool prepare(Renderer& renderer) = 0;
    /// After `prepare`. Frames asked for ahead of what is heard are dropped by the next stop. False when the
    /// device is gone again.
    [[nodiscard]] virtual bool start() = 0;
    virtual void stop() = 0;
    /// Frames heard since the last start.
    [[nodiscard]] virtual std::uint64_t playedFrames() const = 0;
    /// Frames may have come that `isReady` waits for. Any thread.
    virtual void wake() {}
};

} // namespace bass
