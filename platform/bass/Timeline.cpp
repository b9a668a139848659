#include "platform/bass/Timeline.h"

#include <algorithm>

namespace bass {

void Timeline::advance(std::uint64_t deviceFrame, std::size_t frames) noexcept {
    if (frames == 0) return;
    // When the ring is full the segment begins with the next frames.
    if (m_broken) m_broken = !m_segments.push({deviceFrame, m_mixed.load(std::memory_order_relaxed)});
    m_mixed.fetch_add(static_cast<std::int64_t>(frames));
}

std::int64_t Timeline::playedFrame(std::uint64_t devicePlayed) {
    while (const Segment* next = m_segments.front()) {
        if (!m_first) m_first = next->deviceFrame;
        if (next->deviceFrame > devicePlayed) break;
        m_current = *next;
        m_segments.consume(1);
    }
    if (!m_current) return m_startFrame;
    const std::int64_t mixed = m_mixed.load(); // read before the next segment, which may begin at any time
    const Segment* next = m_segments.front();
    const std::int64_t end = next ? next->sourceFrame : mixed;
    const auto played =
        static_cast<std::int64_t>(devicePlayed - std::min(m_current->deviceFrame, devicePlayed));
    return std::min(end, m_current->sourceFrame + played);
}

std::optional<std::uint64_t> Timeline::firstDeviceFrame() {
    if (!m_first)
        if (const Segment* next = m_segments.front()) m_first = next->deviceFrame;
    return m_first;
}

void Timeline::restartAt(std::int64_t frame) {
    m_mixed = frame;
    m_startFrame = frame;
    m_current.reset();
    m_first.reset();
    while (m_segments.take()) {
    }
    m_broken = true;
}

} // namespace bass
