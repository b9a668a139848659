#pragma once

#include "platform/bass/Attribute.h"
#include "platform/bass/FrameFormat.h"
#include "platform/bass/MixEvent.h"
#include "platform/bass/SampleTap.h"
#include "platform/bass/SpscRing.h"
#include "platform/bass/Timeline.h"
#include "platform/bass/replaygain.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <semaphore>
#include <span>

namespace bass {

using EventRing = SpscRing<MixEvent>;

/// The mixer's side of a stream: decoded frames, gain and pan, the tap, and the next voice, with which it
/// continues after its last frame.
///
/// Threads: the functions are grouped by thread. Those marked "at rest" need the engine's lock, and the mixer
/// not to use the voice.
class Voice {
public:
    struct Config {
        std::size_t framesAhead;  ///< Capacity of the ring of decoded frames.
        std::size_t refillFrames; ///< Frames to decode after an underrun before the voice continues.
    };
    /// Frames kept after mixing: more than any device queues.
    static constexpr std::size_t historyFrames = 32768;

    /// `work` is released to wake the worker when the ring is half empty.
    Voice(std::uint32_t handle, const Config& config, std::counting_semaphore<>& work);

    // ---- the worker ----

    std::size_t writable() const { return m_ring.writable(); }
    void write(std::span<const Frame> frames) { m_ring.write(frames); }
    /// Marks the end of the source. Call it after the last write.
    void complete() { m_complete = true; }
    /// Requests a wake-up when there is room. False when there is room already.
    bool askForRoom();

    // ---- any thread ----

    bool isComplete() const { return m_complete; }
    std::size_t readable() const { return m_ring.readable(); }
    /// The source frame that is written next. A little more while frames are mixed.
    std::int64_t decodedFrame() const {
        return m_timeline.mixedFrame() + static_cast<std::int64_t>(m_ring.readable());
    }
    /// True during an underrun.
    bool isDry() const { return m_dry; }

    // ---- the engine's lock ----

    /// Slides to the gain of the file's ReplayGain, which is applied in addition to `gain`.
    void setLoudness(const Loudness& loudness, std::uint32_t frames);
    /// At rest: finishes the slide of the loudness.
    void settleLoudness() { m_loudness.finishSlide(); }

    Attribute& gain() { return m_gain; }
    Attribute& pan() { return m_pan; }
    const Attribute& gain() const { return m_gain; }
    const Attribute& pan() const { return m_pan; }
    std::int64_t playedFrame(std::uint64_t devicePlayed) { return m_timeline.playedFrame(devicePlayed); }
    std::optional<std::uint64_t> firstDeviceFrame() { return m_timeline.firstDeviceFrame(); }
    /// Copies the frames up to the one being played.
    void lastPlayed(std::uint64_t devicePlayed, std::span<Frame> out);
    std::uint32_t generation() const { return m_generation; }

    /// Sets the voice that the mixer continues with; null for none. The mixer may use the previous one until
    /// Mixer::settle.
    void setNext(Voice* next) { m_next = next; }
    /// Set while a next voice is being prepared. An output without a clock waits for it.
    void setNextPending(bool pending) { m_nextPending = pending; }
    /// False while the core does not have the handle of a stream that was made to follow another. An output
    /// without a clock waits for that, too.
    void setClaimed(bool claimed) { m_claimed = claimed; }
    bool isClaimed() const { return m_claimed; }
    /// True once the mixer has continued with the next voice.
    bool hasJoined() const { return m_joined; }
    /// The tap must live until another is set and Mixer::settle has returned.
    void setTap(SampleTap* tap) { m_tap = tap; }
    SampleTap* tap() const { return m_tap; }

    /// At rest: steps back to the frame that was played last, so that what was mixed ahead is mixed again.
    void rewind(std::uint64_t devicePlayed);
    /// At rest: steps back to the first frame, as far as the history goes.
    void rewindToStart();
    /// At rest: empties the ring. The next frame written is `frame` of the source.
    void restartAt(std::int64_t frame);

    // ---- the audio thread ----

    /// Adds frames to `out`, which begins at `deviceFrame`. When the voice ends within `out`, the next one
    /// fills the rest. Returns the voice to continue with.
    Voice* mix(std::span<Frame> out, std::uint64_t deviceFrame, EventRing& events) noexcept;
    /// True when `frames` frames are decoded, or no more are to come.
    bool isReady(std::size_t frames) const noexcept;

private:
    std::size_t framesToMix(std::size_t wanted, bool complete) const noexcept;
    void mixFrames(std::span<Frame> out, bool runsDry) noexcept;
    void addTo(std::span<Frame> out, std::span<const Frame> frames, std::size_t framesUntilDry) noexcept;
    void tapFrames(std::span<const Frame> frames) noexcept;
    void postSlides(std::uint64_t deviceFrame, EventRing& events) noexcept;
    Voice* end(std::span<Frame> rest, std::uint64_t deviceFrame, EventRing& events) noexcept;
    void continueFrom(Voice& former) noexcept;
    void startOver(std::int64_t frame);

    const std::uint32_t m_handle;
    const std::size_t m_refillFrames;
    std::counting_semaphore<>& m_work;
    SpscRing<Frame> m_ring;
    Timeline m_timeline;
    Attribute m_gain;
    Attribute m_pan;
    Attribute m_loudness;
    Ramp m_edge{1.0F}; ///< Audio thread, as the next two: fades out and in at a discontinuity.
    bool m_endSent = false;
    std::size_t m_tappedAhead = 0; ///< After a rewind: frames that were tapped already.

    std::atomic<bool> m_complete{false};
    std::atomic<bool> m_hungry{false}; ///< The worker waits for room.
    std::atomic<bool> m_dry{false};
    std::atomic<bool> m_joined{false};
    std::atomic<bool> m_nextPending{false};
    std::atomic<bool> m_claimed{true};
    std::atomic<Voice*> m_next{nullptr};
    std::atomic<float> m_maxLoudness{1.0F};
    std::atomic<SampleTap*> m_tap{nullptr};
    std::atomic<std::uint32_t> m_generation{
        0}; ///< Incremented when mixed frames are discarded; changes at rest.
};

} // namespace bass
