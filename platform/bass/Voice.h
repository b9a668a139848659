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

/// What the mixer reads of a stream: its decoded frames, gain and pan, the tap, and which voice follows. It
/// takes no decisions of its own but one: at its last frame it continues with the voice that follows.
///
/// Threads: four groups below. "At rest" calls need the mixer not to have the voice, and the engine's lock.
class Voice {
public:
    struct Config {
        std::size_t framesAhead;  ///< Decoded ahead of the mixer.
        std::size_t refillFrames; ///< There before a voice that ran dry goes on; less would stutter.
    };
    /// Frames kept behind the mixer: more than any device queues.
    static constexpr std::size_t historyFrames = 32768;

    /// `work` wakes the worker when there is room for much.
    Voice(std::uint32_t handle, const Config& config, std::counting_semaphore<>& work);

    // ---- the worker ----

    std::size_t writable() const { return m_ring.writable(); }
    void write(std::span<const Frame> frames) { m_ring.write(frames); }
    /// The ring gets no more. To be said after the last write.
    void complete() { m_complete = true; }
    /// The worker is about to wait for room. False when there is room now.
    bool askForRoom();

    // ---- any thread ----

    bool isComplete() const { return m_complete; }
    std::size_t readable() const { return m_ring.readable(); }
    /// The frame of the source that is written next; while frames are mixed, a little more.
    std::int64_t decodedFrame() const {
        return m_timeline.mixedFrame() + static_cast<std::int64_t>(m_ring.readable());
    }
    /// Wants frames, and has none.
    bool isDry() const { return m_dry; }

    // ---- the engine's lock ----

    /// What the file's ReplayGain makes of it, beside `gain`, which is the user's. A voice that follows
    /// starts with its own.
    void setLoudness(const Loudness& loudness, std::uint32_t frames);
    /// At rest: the slide to it is over.
    void settleLoudness() { m_loudness.finishSlide(); }

    Attribute& gain() { return m_gain; }
    Attribute& pan() { return m_pan; }
    const Attribute& gain() const { return m_gain; }
    const Attribute& pan() const { return m_pan; }
    std::int64_t playedFrame(std::uint64_t devicePlayed) { return m_timeline.playedFrame(devicePlayed); }
    std::optional<std::uint64_t> firstDeviceFrame() { return m_timeline.firstDeviceFrame(); }
    /// The frames up to the one being played.
    void lastPlayed(std::uint64_t devicePlayed, std::span<Frame> out);
    std::uint32_t generation() const { return m_generation; }

    /// The voice that the mixer continues with; null for none. The mixer may still use the former one until
    /// it has settled.
    void setNext(Voice* next) { m_next = next; }
    /// A next voice is being prepared: an output without a clock waits for it.
    void setNextPending(bool pending) { m_nextPending = pending; }
    /// Made to follow another voice, and not yet known to the one that controls it. An output without a clock
    /// waits for that, too.
    void setClaimed(bool claimed) { m_claimed = claimed; }
    bool isClaimed() const { return m_claimed; }
    /// Whether the mixer has continued with the next voice.
    bool hasJoined() const { return m_joined; }
    /// The tap must outlive its time here: until another is set and the mixer has settled.
    void setTap(SampleTap* tap) { m_tap = tap; }
    SampleTap* tap() const { return m_tap; }

    /// At rest: what was mixed and will not be played is mixed again.
    void rewind(std::uint64_t devicePlayed);
    /// At rest: back to the first frame, as far as the history goes.
    void rewindToStart();
    /// At rest: an empty ring, whose next frame will be `frame` of the source.
    void restartAt(std::int64_t frame);

    // ---- the audio thread ----

    /// Adds frames to `out`, which is the device's from `deviceFrame` on. When the voice ends within `out`
    /// and another follows, that one fills the rest, and is answered; else this one.
    Voice* mix(std::span<Frame> out, std::uint64_t deviceFrame, EventRing& events) noexcept;
    /// Has `frames` frames, or nothing more to wait for.
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
    Ramp m_edge{1.0F}; ///< Audio thread, as the next two: keeps a discontinuity from clicking.
    bool m_endSent = false;
    std::size_t m_tappedAhead = 0; ///< Frames that a rewind has left to be mixed again, but not tapped.

    std::atomic<bool> m_complete{false};
    std::atomic<bool> m_hungry{false}; ///< The worker waits for room.
    std::atomic<bool> m_dry{false};
    std::atomic<bool> m_joined{false};
    std::atomic<bool> m_nextPending{false};
    std::atomic<bool> m_claimed{true};
    std::atomic<Voice*> m_next{nullptr};
    std::atomic<float> m_maxLoudness{1.0F};
    std::atomic<SampleTap*> m_tap{nullptr};
    std::atomic<std::uint32_t> m_generation{0}; ///< Of the meaning of mixed frames; changes at rest.
};

} // namespace bass
