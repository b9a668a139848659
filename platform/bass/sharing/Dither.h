#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace bass {

/// Turns float samples into 16-bit ones with triangular dither two steps wide, which makes the error noise
/// that does not depend on the sound. See Lipshitz, Wannamaker, Vanderkooy, "Quantization and Dither" (1992).
class Dither {
public:
    std::int16_t operator()(float sample) {
        if (!std::isfinite(sample)) return 0;
        const float noise = uniform() - uniform();
        const float scaled = std::clamp(sample * 32768.0F + noise, -32768.0F, 32767.0F);
        return static_cast<std::int16_t>(std::lrint(scaled));
    }

private:
    /// 0 .. 1, by xorshift (Marsaglia 2003).
    float uniform() {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return static_cast<float>(m_state >> 8) * 0x1p-24F;
    }

    std::uint32_t m_state = 2463534242;
};

} // namespace bass
