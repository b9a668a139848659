#pragma once

#include "platform/bass/LatestValue.h"
#include "platform/bass/Ramp.h"

#include <atomic>
#include <cstdint>

namespace bass {

/// One attribute of a channel (gain or pan): set or slid by any thread, followed by the audio thread.
///
/// Threads: the first group under the engine's lock, the second is the audio thread's.
class Attribute {
public:
    explicit Attribute(float value) : target_(value), ramp_(value), current_(value) {}

    void set(float value);
    void slide(float value, std::uint64_t frames);
    /// Where a slide is now; the value set where there is none.
    [[nodiscard]] float get() const { return sliding_ ? current_.load() : target_; }
    [[nodiscard]] bool isSliding() const { return sliding_; }
    /// The end of the slide `number` has been heard. False when something replaced it meanwhile.
    bool slideHeard(std::uint32_t number);

    /// Takes what was set since; at once where `nothingSounds`, for then nothing can click.
    void follow(bool nothingSounds);
    [[nodiscard]] float value() const { return ramp_.value(); }
    /// Frames until it rests.
    [[nodiscard]] std::uint64_t framesLeft() const { return ramp_.framesLeft(); }
    void advance(std::uint64_t frames) { ramp_.advance(frames); }
    /// The number of the slide that is at its target but not told yet; 0 when there is none.
    [[nodiscard]] std::uint32_t finishedSlide() const { return ramp_.framesLeft() == 0 ? slide_ : 0; }
    void told() { slide_ = 0; }
    /// Shows `get` where it is.
    void show() { current_.store(ramp_.value()); }

private:
    struct Order {
        float target = 0;
        std::uint64_t frames = 0;
        std::uint32_t slide = 0; ///< its number; 0 for a value set
    };

    float target_;
    bool sliding_ = false;
    std::uint32_t number_ = 0; ///< of the last slide

    Ramp ramp_;
    std::uint32_t slide_ = 0; ///< under way or not told yet

    LatestValue<Order> order_;
    std::atomic<float> current_;
    static_assert(std::atomic<float>::is_always_lock_free);
};

} // namespace bass
