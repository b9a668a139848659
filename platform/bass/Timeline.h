#pragma once

#include "platform/bass/SpscRing.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace bass {

/// Maps frames of the device's timeline to frames of one source, in segments within which the source's frames
/// follow one another. A segment begins at every discontinuity: a start, a seek, the end of an underrun. Two
/// sources that join without a gap are two timelines whose segments are adjacent.
///
/// Threads: `advance` and `breakOff` are the audio thread's; `playedFrame` and `firstDeviceFrame` belong to
/// who holds the engine's lock; `restartAt` also needs the audio thread to be at rest. `mixedFrame` any
/// thread's.
class Timeline {
public:
    /// `frames` frames of the source were mixed for the device's frames from `deviceFrame` on.
    void advance(std::uint64_t deviceFrame, std::size_t frames) noexcept;
    /// The next frame mixed does not follow the last one directly.
    void breakOff() noexcept { m_broken = true; }

    /// The frame of the source that is mixed next.
    std::int64_t mixedFrame() const { return m_mixed.load(); }
    /// The frame of the source that is played when the device has played `devicePlayed` frames.
    std::int64_t playedFrame(std::uint64_t devicePlayed);
    /// Where on the device's timeline the first frame since `restartAt` was mixed; none before.
    std::optional<std::uint64_t> firstDeviceFrame();

    /// The next frame mixed is `frame` of the source; what was mixed before no longer counts.
    void restartAt(std::int64_t frame);

private:
    struct Segment {
        std::uint64_t deviceFrame;
        std::int64_t sourceFrame;
    };

    std::atomic<std::int64_t> m_mixed{0};
    bool m_broken = true;             ///< Audio thread: the next frame begins a segment.
    SpscRing<Segment> m_segments{64}; ///< From the audio thread.
    std::optional<Segment> m_current; ///< Engine's lock, as below: the segment being played.
    std::optional<std::uint64_t> m_first;
    std::int64_t m_startFrame = 0; ///< Played while no segment is.
};

} // namespace bass
