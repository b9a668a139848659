#pragma once

#include "platform/bass/SampleTap.h"
#include "platform/bass/SpscRing.h"
#include "platform/bass/sharing/Dither.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <span>

namespace bass {

/// What an encoder gets to hear: the frames of the channels it is attached to, one after the other, and
/// silence in real time where there are none.
///
/// Silence is put in after the sound has been away for `quiet`, or where a new channel follows (`follow`),
/// never into the middle of one: a device's clock may be a little slower than ours.
///
/// Threads: `tapped` is the audio thread's, `take` the encoder thread's; the others may come from any.
class SampleFeed : public SampleTap {
public:
    using Clock = std::chrono::steady_clock;
    /// Longer than any device waits between two calls for frames.
    static constexpr std::chrono::milliseconds quiet{600};

    explicit SampleFeed(Clock::time_point start) : m_start(start), m_lastSound(start) {}

    void tapped(std::span<const Frame> frames) noexcept override;

    /// What is tapped from now on is another channel's. No `tapped` may be under way.
    void follow() { m_boundary = m_pushed.load(); }

    /// Fills `out` with interleaved stereo from its begin, and answers the frames.
    std::size_t take(std::span<std::int16_t> out, Clock::time_point now);

    /// Frames that came while the encoder was too far behind.
    std::uint64_t lostFrames() const { return m_lost.load(); }

private:
    static constexpr std::size_t capacity = 131072; // 3 s

    std::size_t takeSound(std::span<std::int16_t> out, std::int64_t due);
    std::size_t takeSilence(std::span<std::int16_t> out, std::int64_t due);

    SpscRing<Frame> m_ring{capacity};
    std::atomic<std::uint64_t> m_pushed{0};
    std::atomic<std::uint64_t> m_lost{0};
    std::atomic<std::uint64_t> m_boundary{0}; ///< The frame, of those pushed, with which a channel begins.

    const Clock::time_point m_start; ///< The encoder thread's, as all below.
    Clock::time_point m_lastSound;
    Dither m_dither;
    std::uint64_t m_taken = 0;  ///< Of those pushed.
    std::uint64_t m_joined = 0; ///< The last boundary that was passed.
    std::uint64_t m_lostSeen = 0;
    std::int64_t m_fed = 0; ///< Frames given to the encoder, and those lost, since m_start.
};

} // namespace bass
