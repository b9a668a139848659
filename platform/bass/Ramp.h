#pragma once

#include <algorithm>
#include <cstdint>

namespace bass {

/// 5 ms: too short to hear as a slide, long enough not to click.
inline constexpr std::uint64_t declickFrames = 220;

/// A value that moves linearly to its target, one step a frame. The audio thread's.
class Ramp {
public:
    explicit Ramp(float value) : value_(value), target_(value) {}

    [[nodiscard]] float value() const { return value_; }
    /// Frames until the target.
    [[nodiscard]] std::uint64_t framesLeft() const { return left_; }

    void jumpTo(float value) {
        value_ = target_ = value;
        left_ = 0;
    }
    void moveTo(float target, std::uint64_t frames) {
        if (frames == 0) return jumpTo(target);
        start_ = value_;
        target_ = target;
        left_ = frames_ = frames;
    }
    void advance(std::uint64_t frames) {
        if (left_ == 0) return;
        left_ -= std::min(left_, frames);
        // From the whole way and not step by step: rounding would add up over a long slide.
        const double done = static_cast<double>(frames_ - left_) / static_cast<double>(frames_);
        value_ = left_ == 0 ? target_ : static_cast<float>(start_ + (double{target_} - start_) * done);
    }

private:
    float value_;
    float target_;
    float start_ = 0;
    std::uint64_t left_ = 0;
    std::uint64_t frames_ = 0;
};

} // namespace bass
