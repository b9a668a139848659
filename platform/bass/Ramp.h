#pragma once

#include <algorithm>
#include <cstdint>

namespace bass {

/// A value that moves linearly to its target, one step per frame. Audio thread only.
class Ramp {
public:
    explicit Ramp(float value) : m_value(value), m_target(value) {}

    float value() const { return m_value; }
    bool isMoving() const { return m_left > 0; }

    void jumpTo(float value) {
        m_value = m_target = value;
        m_left = 0;
    }
    void moveTo(float target, std::uint32_t frames) {
        if (frames == 0) return jumpTo(target);
        m_start = m_value;
        m_target = target;
        m_left = m_frames = frames;
    }
    /// The value of the next frame.
    float next() {
        if (m_left == 0) return m_value;
        advance(1);
        return m_value;
    }
    /// Advances by `frames` frames at once.
    void advance(std::size_t frames) {
        if (m_left == 0) return;
        m_left -= static_cast<std::uint32_t>(std::min<std::size_t>(frames, m_left));
        // Computed from the start value: adding steps would accumulate rounding errors over a long slide.
        const double done = static_cast<double>(m_frames - m_left) / m_frames;
        m_value = m_left == 0
                      ? m_target
                      : static_cast<float>(m_start + (static_cast<double>(m_target) - m_start) * done);
    }

private:
    float m_value;
    float m_target;
    float m_start = 0;
    std::uint32_t m_left = 0;
    std::uint32_t m_frames = 0;
};

} // namespace bass
