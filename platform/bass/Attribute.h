#pragma once

#include "platform/bass/Ramp.h"

#include <atomic>
#include <bit>
#include <cstdint>

namespace bass {

/// One attribute of a channel (gain or pan): set or slid by any thread, followed by the audio thread.
///
/// Threads: `set`, `slide`, `get`, `isSliding` and `slideHeard` under the channel's lock; the rest is the
/// audio thread's.
class Attribute {
public:
    explicit Attribute(float value) : m_ramp(value), m_target(value), m_current(value) {}

    void set(float value);
    void slide(float value, std::uint32_t frames);
    /// Where a slide is now; the value set where there is none.
    float get() const;
    bool isSliding() const { return m_sliding; }
    /// The end of slide number `slide` has been heard. False when it was replaced meanwhile.
    bool slideHeard(std::uint32_t slide);

    /// Takes what was set since. `still` when nothing of the channel has been mixed: there is nothing to
    /// click.
    void follow(bool still);
    float next() { return m_ramp.next(); }
    float value() const { return m_ramp.value(); }
    bool isMoving() const { return m_ramp.isMoving(); }
    /// After mixing: the number of the slide that has just reached its target, or 0.
    std::uint32_t finished();

private:
    struct Order {
        float target;
        std::uint32_t frames;
    };
    void order(float value, std::uint32_t frames);

    Ramp m_ramp;                  ///< Audio thread.
    std::uint32_t m_followed = 0; ///< Audio thread: number of the order it follows.
    bool m_finishing = false;     ///< Audio thread: the order is not at its target yet.
    float m_target;               ///< Lock.
    bool m_sliding = false;       ///< Lock.
    std::atomic<std::uint32_t> m_number{0};
    std::atomic<std::uint64_t> m_order{0};
    std::atomic<float> m_current;
    static_assert(std::atomic<float>::is_always_lock_free);
    static_assert(sizeof(Order) == sizeof(std::uint64_t));
};

} // namespace bass
