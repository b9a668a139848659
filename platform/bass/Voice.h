#pragma once

#include "platform/bass/Attribute.h"
#include "platform/bass/RingBuffer.h"
#include "platform/bass/SampleTap.h"
#include "platform/bass/SpscQueue.h"
#include "platform/bass/Wakeup.h"

#include <atomic>
#include <cstdint>
#include <span>

namespace bass {

/// Something that will be heard at a frame of the device's run, told by the audio thread when it is mixed.
struct Event {
    enum class Kind { end, volumeSlide, panSlide };
    Kind kind = Kind::end;
    std::uint32_t channel = 0; ///< handle
    std::uint32_t slide = 0;   ///< number of the slide
    std::uint64_t frame = 0;   ///< of the run: heard when the device has played so many
};
using EventQueue = SpscQueue<Event, 256>;

/// The side of a channel that the audio thread mixes: its ring, gain and pan.
///
/// Threads: one decoding thread writes the ring. While the voice is in the mixer, `mix` and `canFill` are the audio
/// thread's; `begin` and `rewindToHeard` are called under the engine's lock while it is out of it, `heardCount`
/// under the lock at any time. Atomics are any thread's.
class Voice {
public:
    /// `room` is woken when the ring wants frames.
    Voice(std::uint32_t channel, Wakeup& room) : channel_(channel), room_(room) {}

    /// The writer refills from here on; about a third of a second.
    static constexpr std::size_t lowFrames = 16384;

    RingBuffer ring;
    Attribute volume{1.0F};
    Attribute pan{0.0F};
    std::atomic<SampleTap*> tap{nullptr};
    /// The source's last frame is in the ring.
    std::atomic<bool> isComplete{false};

    /// Ready for a run of its own in the mixer; `softly` fades it in.
    void begin(bool softly);
    /// How many frames of the ring have been heard once the device has played `deviceFrames`.
    [[nodiscard]] std::uint64_t heardCount(std::uint64_t deviceFrames);
    void rewindToHeard(std::uint64_t deviceFrames) { ring.rewindTo(heardCount(deviceFrames)); }

    /// Adds its next frames to `out`, which the device will play from frame `at` on, and answers how many they were.
    /// A block may begin anywhere, so that a voice can start at the frame at which another ended.
    std::size_t mix(std::span<float> out, std::uint64_t at, EventQueue& events) noexcept;
    [[nodiscard]] bool hasEnded() const { return ended_; }
    /// Whether `frames` frames can be had without a gap.
    [[nodiscard]] bool canFill(std::size_t frames) const { return isComplete || ring.readable() >= frames; }

    [[nodiscard]] bool isStalled() const { return stalled_; }
    [[nodiscard]] std::uint64_t underruns() const { return underruns_; }

private:
    /// From device frame `at` on the ring was played from frame `count` on.
    struct Stretch {
        std::uint64_t at = 0;
        std::uint64_t count = 0;
    };

    [[nodiscard]] std::size_t framesToMix(std::size_t wanted) noexcept;
    void mixFrames(std::span<float> out, std::size_t frames) noexcept;
    void addRun(float* out, std::span<const float> run) noexcept;
    void hand(std::span<const float> run, std::uint64_t count) noexcept;
    void advance(std::size_t frames) noexcept;
    void tell(Event::Kind kind, Attribute& attribute, std::uint64_t at, EventQueue& events) noexcept;

    const std::uint32_t channel_;
    Wakeup& room_;

    // The audio thread's while in the mixer.
    Ramp fade_{1.0F};
    bool fresh_ = true;          ///< nothing of this run has been mixed
    bool ended_ = false;         ///< told that it has
    std::uint64_t next_ = 0;     ///< device frame at which the last stretch goes on
    std::uint64_t tapped_ = 0;   ///< frames of the ring that a tap had its chance to hear
    std::uint64_t fading_ = 0;   ///< frames at the end of what is there, faded before a gap

    Stretch stretch_;            ///< under the lock: the one heard last
    SpscQueue<Stretch, 64> stretches_;
    std::atomic<bool> stalled_{false};
    std::atomic<std::uint64_t> underruns_{0};
    static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<SampleTap*>::is_always_lock_free);
};

} // namespace bass
