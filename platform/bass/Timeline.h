#pragma once

#include "platform/bass/SpscRing.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace bass {

/// Maps frames of the device's timeline to frames of one source, in segments of consecutive source frames. A
/// segment begins at each discontinuity: a start, a seek, the end of an underrun. Two sources that join
/// without a gap are two timelines with adjacent segments.
///
/// Threads: `advance` and `breakOff` are called on the audio thread; `playedFrame` and `firstDeviceFrame`
/// under the engine's lock; `restartAt` under that lock and with the audio thread at rest; `mixedFrame` on
/// any thread.
class Timeline {
public:
    /// Notes that `frames` frames of the source were mixed at `deviceFrame`.
    void advance(std::uint64_t deviceFrame, std::size_t frames) noexcept;
    /// Marks a discontinuity: the next frame mixed does not follow the last one directly.
    void breakOff() noexcept { m_broken = true; }

    /// The source frame that is mixed next.
    std::int64_t mixedFrame() const { return m_mixed.load(); }
    /// The source frame that is played when the device has played `devicePlayed` frames.
    std::int64_t playedFrame(std::uint64_t devicePlayed);
    /// The device frame at which the first frame since `restartAt` was mixed; none before that.
    std::optional<std::uint64_t> firstDeviceFrame();

    /// Forgets all segments; the next frame mixed is `frame` of the source.
    void restartAt(std::int64_t frame);

private:
    struct Segment {
        std::uint64_t deviceFrame;
        std::int64_t sourceFrame;
    };

    std::atomic<std::int64_t> m_mixed{0};
    bool m_broken = true;             ///< Audio thread: the next frame begins a segment.
    SpscRing<Segment> m_segments{64}; ///< From the audio thread.
    std::optional<Segment> m_current; ///< Engine's lock, as the next two: the segment being played.
    std::optional<std::uint64_t> m_first;
    std::int64_t m_startFrame = 0; ///< The position while no segment has been played.
};

} // namespace bass
