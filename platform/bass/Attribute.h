#pragma once

#include "platform/bass/Ramp.h"

#include <atomic>
#include <bit>
#include <cstdint>

namespace bass {

/// A gain or pan of a stream: set or slid by control calls, applied by the audio thread.
///
/// Threads: the first group of functions needs the engine's lock; those marked "at rest" also need the mixer
/// not to use the stream. The second group is the audio thread's.
class Attribute {
public:
    /// Identifies a slide among those of all streams, because a slide moves to the following stream at a
    /// join.
    using SlideId = std::uint64_t;

    /// `owner` is the stream's handle.
    Attribute(std::uint32_t owner, float value)
        : m_owner(owner),
          m_ramp(value),
          m_target(value),
          m_order(std::bit_cast<std::uint64_t>(Order{value, 0})),
          m_current(value) {}

    /// Moves to the value over 5 ms, which avoids a click.
    void set(float value);
    void slide(float value, std::uint32_t frames);
    /// The current value of a slide; without one the value set.
    float get() const { return m_sliding ? m_current.load() : m_target; }
    bool isSliding() const { return m_sliding; }
    bool isSlidingToSilence() const { return m_sliding && m_target == 0.0F; }
    /// Notifies that the end of a slide has been played. False when another has replaced it meanwhile.
    bool slidePlayed(SlideId slide);
    /// Takes over value and slide of the stream that this one follows, after a join.
    void adopt(const Attribute& former);
    /// At rest: applies a value that was set without smoothing, as nothing is playing. A slide continues from
    /// its current value.
    void settle();
    /// At rest: moves a slide to its target at once, and returns its id.
    SlideId finishSlide();

    /// Takes over the latest order of the control calls.
    void follow();
    /// At a join: takes over the ramp of the former stream.
    void continueFrom(const Attribute& former);
    /// At a join: moves from `value` to its own value over 5 ms.
    void startFrom(float value);
    Ramp& ramp() { return m_ramp; }
    /// After mixing: the slide that has just reached its target; 0 for none.
    SlideId finished();

private:
    struct Order {
        float target;
        std::uint32_t frames;
    };
    void order(float value, std::uint32_t frames);
    SlideId idOf(std::uint32_t number) const { return std::uint64_t{m_owner} << 32 | number; }

    const std::uint32_t m_owner;

    Ramp m_ramp;                  ///< Audio thread, as the next three.
    std::uint32_t m_followed = 0; ///< Number of the order that was taken over last.
    SlideId m_slide = 0;          ///< Its id, which may be that of a former stream's slide.
    bool m_finishing = false;     ///< The ramp has not reached its target yet.

    float m_target; ///< Engine's lock, as the next two.
    SlideId m_lastSlide = 0;
    bool m_sliding = false;

    std::atomic<std::uint32_t> m_number{0};
    std::atomic<std::uint64_t> m_order;
    std::atomic<float> m_current;
    static_assert(std::atomic<float>::is_always_lock_free);
    static_assert(sizeof(Order) == sizeof(std::uint64_t));
};

} // namespace bass
