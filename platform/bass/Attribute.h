#pragma once

#include "platform/bass/Ramp.h"

#include <atomic>
#include <bit>
#include <cstdint>

namespace bass {

/// One attribute of a stream (gain or pan): set or slid by a control call, followed by the audio thread.
///
/// Threads: the first group under the engine's lock; those that say "at rest" while the mixer does not have
/// the stream. The second group is the audio thread's.
class Attribute {
public:
    /// Numbers the slides of all attributes of a library, so that one that moves to another stream at a join
    /// keeps its identity.
    using SlideId = std::uint64_t;

    /// `owner` is the stream's handle.
    Attribute(std::uint32_t owner, float value)
        : m_owner(owner),
          m_ramp(value),
          m_target(value),
          m_order(std::bit_cast<std::uint64_t>(Order{value, 0})),
          m_current(value) {}

    /// Reaches the value within 5 ms, without a click.
    void set(float value);
    void slide(float value, std::uint32_t frames);
    /// Where a slide is now; the value set where there is none.
    float get() const { return m_sliding ? m_current.load() : m_target; }
    bool isSliding() const { return m_sliding; }
    bool isSlidingToSilence() const { return m_sliding && m_target == 0.0F; }
    /// The end of a slide has been played. False when it was replaced meanwhile.
    bool slidePlayed(SlideId slide);
    /// Goes on with the value and the slide of the stream that this one has followed at a join.
    void adopt(const Attribute& former);
    /// At rest: nothing is playing that could click. Takes a value that was set at once; what slides, slides
    /// on from where it is.
    void settle();
    /// At rest: brings a slide to its target at once, and answers it.
    SlideId finishSlide();

    /// Takes what was ordered since.
    void follow();
    /// At a join: goes on from where the former stream's ramp is.
    void continueFrom(const Attribute& former);
    /// At a join: reaches its own value from another one within 5 ms.
    void startFrom(float value);
    Ramp& ramp() { return m_ramp; }
    /// After mixing: the slide that has just reached its target, or 0.
    SlideId finished();

private:
    struct Order {
        float target;
        std::uint32_t frames;
    };
    void order(float value, std::uint32_t frames);
    SlideId idOf(std::uint32_t number) const { return std::uint64_t{m_owner} << 32 | number; }

    const std::uint32_t m_owner;

    Ramp m_ramp;                  ///< Audio thread, as the three below.
    std::uint32_t m_followed = 0; ///< Number of the order it follows.
    SlideId m_slide = 0;          ///< The same as an identity, which may be a former stream's.
    bool m_finishing = false;     ///< The order has not reached its target yet.

    float m_target; ///< Engine's lock, as the two below.
    SlideId m_lastSlide = 0;
    bool m_sliding = false;

    std::atomic<std::uint32_t> m_number{0};
    std::atomic<std::uint64_t> m_order;
    std::atomic<float> m_current;
    static_assert(std::atomic<float>::is_always_lock_free);
    static_assert(sizeof(Order) == sizeof(std::uint64_t));
};

} // namespace bass
