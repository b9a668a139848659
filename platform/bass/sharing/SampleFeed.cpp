#include "platform/bass/sharing/SampleFeed.h"

#include <algorithm>

namespace bass {

namespace {

constexpr std::int64_t rate = 44100;
/// An output without a device may run faster than time; silence after that must not wait for the clock.
constexpr std::int64_t mostAhead = 2 * rate;

} // namespace

void SampleFeed::tapped(std::span<const Frame> frames) noexcept {
    const std::size_t pushed = m_ring.write(frames);
    m_pushed += pushed;
    m_lost += frames.size() - pushed;
}

std::size_t SampleFeed::take(std::span<std::int16_t> out, Clock::time_point now) {
    using Frames = std::chrono::duration<std::int64_t, std::ratio<1, rate>>;
    const std::int64_t due = std::chrono::duration_cast<Frames>(now - m_start).count();
    const std::uint64_t lost = m_lost.load();
    m_fed += static_cast<std::int64_t>(lost - m_lostSeen);
    m_lostSeen = lost;

    const std::uint64_t before = m_taken;
    std::size_t frames = takeSound(out, due);
    if (m_taken != before) m_lastSound = now;
    if (now - m_lastSound >= quiet) frames += takeSilence(out.subspan(frames * 2), due);
    m_fed = std::min(m_fed, due + mostAhead);
    return frames;
}

std::size_t SampleFeed::takeSound(std::span<std::int16_t> out, std::int64_t due) {
    std::size_t frames = 0;
    const std::uint64_t boundary = m_boundary.load();
    while (frames < out.size() / 2) {
        if (m_taken == boundary && m_joined != boundary) {
            frames += takeSilence(out.subspan(frames * 2), due);
            if (m_fed < due) return frames; // the rest of it the next time
            m_joined = boundary;
            continue;
        }
        const Frame* frame = m_ring.front();
        if (!frame) break;
        out[frames * 2] = m_dither((*frame)[0]);
        out[frames * 2 + 1] = m_dither((*frame)[1]);
        m_ring.consume(1);
        ++frames;
        ++m_taken;
        ++m_fed;
    }
    return frames;
}

std::size_t SampleFeed::takeSilence(std::span<std::int16_t> out, std::int64_t due) {
    const std::int64_t missing = std::max<std::int64_t>(due - m_fed, 0);
    const std::size_t frames = std::min(static_cast<std::size_t>(missing), out.size() / 2);
    std::fill_n(out.begin(), frames * 2, std::int16_t{0});
    m_fed += static_cast<std::int64_t>(frames);
    return frames;
}

} // namespace bass
