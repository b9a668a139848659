#include "platform/bass/Voice.h"

#include "platform/bass/bass.h"

#include <algorithm>

namespace bass {
namespace {

/// 5 ms: the fade at a discontinuity.
constexpr std::uint32_t edgeFrames = 220;

} // namespace

Voice::Voice(std::uint32_t handle, const Config& config, std::counting_semaphore<>& work)
    : m_handle(handle),
      m_refillFrames(config.refillFrames),
      m_work(work),
      m_ring(config.framesAhead, historyFrames),
      m_gain(handle, 1.0F),
      m_pan(handle, 0.0F),
      m_loudness(handle, 1.0F) {}

// ---- worker ----

bool Voice::askForRoom() {
    m_hungry = true;
    if (m_ring.readable() > m_ring.capacity() / 2) return true;
    m_hungry = false;
    return false;
}

// ---- engine's lock ----

void Voice::setLoudness(const Loudness& loudness, std::uint32_t frames) {
    m_maxLoudness = loudness.maxGain;
    m_loudness.slide(loudness.gain, frames);
}

void Voice::lastPlayed(std::uint64_t devicePlayed, std::span<Frame> out) {
    const std::int64_t ahead = m_timeline.mixedFrame() - m_timeline.playedFrame(devicePlayed);
    m_ring.copyHistory(static_cast<std::uint64_t>(std::max<std::int64_t>(ahead, 0)), out);
}

void Voice::rewind(std::uint64_t devicePlayed) {
    const std::int64_t mixed = m_timeline.mixedFrame();
    const std::int64_t unplayed = std::max<std::int64_t>(mixed - m_timeline.playedFrame(devicePlayed), 0);
    const std::size_t back = m_ring.rewind(static_cast<std::uint64_t>(unplayed));
    m_tappedAhead += back;
    startOver(mixed - static_cast<std::int64_t>(back));
}

void Voice::rewindToStart() {
    const std::int64_t mixed = m_timeline.mixedFrame();
    const std::size_t back = m_ring.rewind(static_cast<std::uint64_t>(mixed));
    m_tappedAhead += back;
    startOver(mixed - static_cast<std::int64_t>(back));
}

void Voice::restartAt(std::int64_t frame) {
    m_ring.clear();
    m_complete = false;
    m_tappedAhead = 0;
    startOver(frame);
}

void Voice::startOver(std::int64_t frame) {
    m_timeline.restartAt(frame);
    m_edge.jumpTo(1.0F);
    if (frame > 0) {
        m_edge.jumpTo(0.0F);
        m_edge.moveTo(1.0F, edgeFrames);
    }
    m_dry = false;
    m_endSent = false;
    m_joined = false;
    ++m_generation;
}

// ---- audio thread ----

bool Voice::isReady(std::size_t frames) const noexcept {
    if (!m_claimed) return false;
    if (m_ring.readable() > frames)
        return true; // one more, so that the last frame is mixed together with the next voice
    if (!m_complete) return false;
    return m_joined || !m_nextPending;
}

std::size_t Voice::framesToMix(std::size_t wanted, bool complete) const noexcept {
    const std::size_t there = m_ring.readable();
    const bool refilled = !m_dry.load(std::memory_order_relaxed) || complete || there >= m_refillFrames;
    return refilled ? std::min(wanted, there) : 0;
}

Voice* Voice::mix(std::span<Frame> out, std::uint64_t deviceFrame, EventRing& events) noexcept {
    const bool complete = m_complete.load(); // read before `readable`: if it is set, no frames are added
    const std::size_t frames = framesToMix(out.size(), complete);
    const bool ends = complete && frames == m_ring.readable();
    const bool runsDry = frames < out.size() && !ends;
    m_gain.follow();
    m_pan.follow();
    m_loudness.follow();
    m_timeline.advance(deviceFrame, frames);
    mixFrames(out.first(frames), runsDry);
    m_dry = runsDry;
    if (runsDry) m_timeline.breakOff();
    if (m_hungry.load() && m_ring.readable() <= m_ring.capacity() / 2 && m_hungry.exchange(false))
        m_work.release();

    const std::span<Frame> rest = out.subspan(frames);
    if (ends && !m_endSent) {
        Voice* const follower = end(rest, deviceFrame + frames, events);
        if (follower != this) return follower;
    }
    // Slides advance during an underrun, too: a pause waits for the end of its fade.
    m_gain.ramp().advance(rest.size());
    m_pan.ramp().advance(rest.size());
    m_loudness.ramp().advance(rest.size());
    postSlides(deviceFrame + out.size(), events);
    return this;
}

/// Reports the end, and continues with the next voice.
Voice* Voice::end(std::span<Frame> rest, std::uint64_t deviceFrame, EventRing& events) noexcept {
    m_endSent = events.push({.kind = MixEvent::Kind::end,
                             .stream = m_handle,
                             .generation = m_generation.load(),
                             .deviceFrame = deviceFrame});
    Voice* const next = m_next.load();
    if (!m_endSent || !next) return this; // the event ring is full: try again with the next frames
    next->continueFrom(*this);
    m_joined = true;
    return next->mix(rest, deviceFrame, events);
}

void Voice::continueFrom(Voice& former) noexcept {
    m_gain.continueFrom(former.m_gain);
    m_pan.continueFrom(former.m_pan);
    // Start from the former voice's level to avoid a click, but not from one that would clip this voice.
    m_loudness.startFrom(std::min(former.m_loudness.ramp().value(), m_maxLoudness.load()));
    m_tap.store(former.m_tap.load());
}

void Voice::mixFrames(std::span<Frame> out, bool runsDry) noexcept {
    std::size_t left = out.size();
    for (const std::span<const Frame> run : m_ring.peek(out.size())) {
        tapFrames(run);
        addTo(out.subspan(out.size() - left, run.size()), run, runsDry ? left : SIZE_MAX);
        left -= run.size();
    }
    m_ring.consume(out.size());
    if (runsDry && !out.empty()) {
        m_edge.jumpTo(0.0F);
        m_edge.moveTo(1.0F, edgeFrames);
    }
}

/// `framesUntilDry` is the number of frames until the underrun, before which the fade-out ends.
void Voice::addTo(std::span<Frame> out, std::span<const Frame> frames, std::size_t framesUntilDry) noexcept {
    Ramp& gain = m_gain.ramp();
    Ramp& pan = m_pan.ramp();
    Ramp& loudness = m_loudness.ramp();
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const float edge = m_edge.next();
        const std::size_t left = framesUntilDry - i;
        const float fadeOut = left > edgeFrames ? 1.0F : static_cast<float>(left - 1) / edgeFrames;
        const float level = gain.next() * loudness.next() * std::min(edge, fadeOut);
        const float side = pan.next();
        out[i][0] += frames[i][0] * level * std::min(1.0F, 1.0F - side);
        out[i][1] += frames[i][1] * level * std::min(1.0F, 1.0F + side);
    }
}

void Voice::tapFrames(std::span<const Frame> frames) noexcept {
    const std::size_t again = std::min(m_tappedAhead, frames.size());
    m_tappedAhead -= again;
    SampleTap* const tap = m_tap.load();
    if (tap && again < frames.size()) tap->tapped(frames.subspan(again));
}

void Voice::postSlides(std::uint64_t deviceFrame, EventRing& events) noexcept {
    const auto post = [&](Attribute& attribute, std::uint32_t which) {
        const Attribute::SlideId slide = attribute.finished();
        if (slide == 0) return;
        events.push({.kind = MixEvent::Kind::slide,
                     .stream = m_handle,
                     .generation = m_generation.load(),
                     .attribute = which,
                     .slide = slide,
                     .deviceFrame = deviceFrame});
    };
    post(m_gain, BASS_ATTRIB_VOL);
    post(m_pan, BASS_ATTRIB_PAN);
}

} // namespace bass
