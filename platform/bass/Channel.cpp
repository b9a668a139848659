#include "platform/bass/Channel.h"

#include "platform/bass/StreamWorker.h"

#include <algorithm>
#include <utility>

namespace bass {
namespace {

/// Frames to decode before a stream starts: the device requests its whole latency at once.
constexpr std::size_t fillFrames = sampleRate / 4;
/// The ring holds 0.7 s of a file and 11 s of a network stream, to bridge a reconnect.
constexpr Voice::Config fileVoice{.framesAhead = 32768, .refillFrames = sampleRate / 10};
constexpr Voice::Config networkVoice{.framesAhead = 491520, .refillFrames = sampleRate / 2};
/// The following source is opened when this much of the current one is left to decode.
constexpr std::int64_t prepareFrames = std::int64_t{10} * sampleRate;
/// 50 ms: the length of the slide when the loudness mode changes.
constexpr std::uint32_t loudnessFrames = sampleRate / 20;

/// Tags queued for frames decoded ahead; further ones replace the last.
constexpr std::size_t maxTagsAhead = 64;

DWORD statusOf(Failure failure) {
    switch (failure) {
    case Failure::none:
        return BASS_STREAM_OPEN;
    case Failure::notFound:
        return BASS_STREAM_NOT_FOUND;
    case Failure::unreadable:
        return BASS_STREAM_UNREADABLE;
    case Failure::noAudio:
        return BASS_STREAM_NO_AUDIO;
    case Failure::nameNotFound:
        return BASS_STREAM_NO_NAME;
    case Failure::refused:
        return BASS_STREAM_REFUSED;
    case Failure::timeout:
        return BASS_STREAM_TIMEOUT;
    case Failure::httpStatus:
        return BASS_STREAM_HTTP_STATUS;
    case Failure::certificate:
        return BASS_STREAM_CERTIFICATE;
    case Failure::lost:
        return BASS_STREAM_LOST;
    }
    return BASS_STREAM_NONE;
}

} // namespace

Channel::Channel(DWORD handle, SourceName name, Engine& engine)
    : m_handle(handle),
      m_name(std::move(name)),
      m_engine(engine),
      m_voice(handle, m_name.kind == BASS_SOURCE_URL ? networkVoice : fileVoice, m_work) {}

// ---- state ----

bool Channel::exists(const Lock& /*lock*/) const {
    return m_state != StreamState::freed && m_state != StreamState::failed;
}

DWORD Channel::active(const Lock& /*lock*/) const {
    switch (m_state) {
    case StreamState::paused:
        return BASS_ACTIVE_PAUSED;
    case StreamState::playing:
        return m_voice.isDry() ? BASS_ACTIVE_STALLED : BASS_ACTIVE_PLAYING;
    case StreamState::starting:
        return isNetwork() ? BASS_ACTIVE_STALLED : BASS_ACTIVE_PLAYING;
    default:
        return BASS_ACTIVE_STOPPED;
    }
}

DWORD Channel::status(const Lock& /*lock*/, DWORD* httpStatus) const {
    if (m_state == StreamState::freed) return BASS_STREAM_NONE;
    const bool over = m_state == StreamState::failed || m_state == StreamState::ended;
    if (over && m_failure != Failure::none) {
        if (httpStatus) *httpStatus = static_cast<DWORD>(m_httpStatus);
        return statusOf(m_failure);
    }
    return m_wasFilled ? BASS_STREAM_OPEN : BASS_STREAM_CONNECTING;
}

/// Carries out the transition of an event. False when the state ignores it.
bool Channel::apply(const Lock& lock, StreamEvent event) {
    const StreamTransition next = transition(m_state, event);
    if (!next.accepted) return false;
    const bool ends = next.state == StreamState::ended;
    if (next.detach && ends)
        m_engine.mixer.detach(m_voice); // all mixed frames have been played: nothing to discard
    else if (next.detach)
        discardMixed(lock);
    m_state = next.state;
    if (next.detach) ends ? m_engine.output.changed() : m_engine.output.flush();
    if (next.attach) attach(lock);
    if (next.fromStart && !m_seek) {
        m_seek = 0;
        beginSeek(lock);
    }
    return true;
}

bool Channel::play(const Lock& lock, bool restart) {
    if (restart && exists(lock)) {
        m_seek = 0;
        beginSeek(lock);
    }
    if (m_endUnclaimed) return true; // played to its end as a follower; the end is reported next
    if (!apply(lock, StreamEvent::play)) return false;
    startIfFilled(lock);
    return true;
}

bool Channel::pause(const Lock& lock) {
    if (!apply(lock, StreamEvent::pause)) return false;
    if (m_seek && !m_seekBegun) beginSeek(lock);
    return true;
}

void Channel::release(const Lock& lock) {
    apply(lock, StreamEvent::release);
    m_voice.setTap(nullptr);
    m_engine.mixer.settle();
    m_syncs.clear();
    m_cancel->close();
    m_work.release();
}

std::int64_t Channel::position(const Lock& /*lock*/) {
    return m_seek ? *m_seek : m_voice.playedFrame(m_engine.output.playedFrame());
}

const StreamTags& Channel::tags(const Lock& /*lock*/) {
    static const StreamTags none;
    const std::int64_t played = m_voice.playedFrame(m_engine.output.playedFrame());
    while (m_tags.size() > 1 && m_tags[1].frame <= played)
        m_tags.pop_front();
    return m_tags.empty() ? none : m_tags.front().tags;
}

// ---- mixing ----

bool Channel::isFilled() const {
    return m_voice.readable() >= fillFrames || m_voice.isComplete();
}

void Channel::startIfFilled(const Lock& lock) {
    if (m_seek || !m_open || !isFilled()) return;
    if (m_voice.isComplete() && m_voice.readable() == 0 && m_endReported) {
        apply(lock, StreamEvent::exhausted);
    } else {
        apply(lock, StreamEvent::filled);
    }
}

void Channel::attach(const Lock& /*lock*/) {
    if (m_engine.mixer.attachedCount() == 0) m_engine.output.dropQueued();
    m_voice.gain().settle();
    m_voice.pan().settle();
    m_voice.settleLoudness();
    m_engine.mixer.attach(m_voice);
    m_engine.output.changed();
}

Channel* Channel::joined(const Lock& /*lock*/) const {
    if (m_state != StreamState::playing || !m_next) return nullptr;
    m_engine.mixer.settle(); // a join may be under way
    return m_voice.hasJoined() ? m_next.get() : nullptr;
}

/// Detaches the voice and returns to the frame that was played last. A voice that the mixer has continued
/// with returns to its start.
void Channel::discardMixed(const Lock& lock) {
    m_engine.mixer.detach(m_voice);
    discardMixed(
        lock, m_engine.output.playedFrame()); // read after detaching: an output without a queue plays at once
}

void Channel::discardMixed(const Lock& lock, std::uint64_t played) {
    m_engine.mixer.detach(m_voice);
    if (Channel* next = joined(lock)) {
        m_engine.mixer.detach(next->m_voice);
        next->m_voice.rewindToStart();
        next->m_voice.setTap(nullptr);
    }
    m_voice.rewind(played);
}

void Channel::rewind(const Lock& lock, std::uint64_t played) {
    if (m_state != StreamState::playing) return;
    Channel* const next = joined(lock);
    if (next && next->m_voice.firstDeviceFrame().value_or(played + 1) <= played) {
        // The join has been played; the end of this stream is about to be reported.
        m_engine.mixer.detach(next->m_voice);
        next->m_voice.rewind(played);
        m_engine.mixer.attach(next->m_voice);
        return;
    }
    discardMixed(lock, played);
    m_engine.mixer.attach(m_voice);
}

void Channel::lastPlayed(const Lock& /*lock*/, std::span<Frame> out) {
    m_voice.lastPlayed(m_engine.output.playedFrame(), out);
}

// ---- seeking ----

bool Channel::seek(const Lock& lock, std::int64_t frame) {
    if (!exists(lock) || (m_open && !m_length)) return false;
    m_seek = std::clamp<std::int64_t>(frame, 0, m_length.value_or(INT64_MAX));
    m_seekBegun = false;
    if (isFadingOut()) {
        // The seek waits for the end of the fade. The following stream must not start meanwhile.
        m_voice.setNext(nullptr);
        if (!joined(lock)) return true;
    }
    beginSeek(lock);
    return true;
}

void Channel::beginSeek(const Lock& lock) {
    m_seekBegun = true;
    apply(lock, StreamEvent::seek);
    finishSlides(lock);
    if (m_open) m_cancel->cancel(); // do not cancel opening: the seek needs it
    m_work.release();
}

void Channel::finishSlides(const Lock& lock) {
    if (!m_voice.gain().isSliding() && !m_voice.pan().isSliding()) return;
    const bool waitsForDevice =
        m_state == StreamState::playing && !m_engine.output.isRunning() && !joined(lock);
    if (m_state != StreamState::starting && !waitsForDevice) return;
    if (waitsForDevice) m_engine.mixer.detach(m_voice); // the device may start at any time
    for (const DWORD which : {BASS_ATTRIB_VOL, BASS_ATTRIB_PAN}) {
        if (!slot(which).isSliding()) continue;
        m_engine.syncs.post({.kind = MixEvent::Kind::slide,
                             .stream = m_handle,
                             .generation = m_voice.generation(),
                             .attribute = which,
                             .slide = slot(which).finishSlide()});
    }
    if (waitsForDevice) attach(lock);
}

// ---- attributes ----

void Channel::setAttribute(const Lock& lock, DWORD attribute, float value) {
    slot(attribute).set(value);
    if (m_state != StreamState::playing) slot(attribute).settle();
    if (Channel* next = joined(lock)) next->slot(attribute).set(value);
    if (m_seek && !m_seekBegun && !isFadingOut()) beginSeek(lock);
}

void Channel::slideAttribute(const Lock& lock, DWORD attribute, float value, std::uint32_t frames) {
    slot(attribute).slide(value, frames);
    if (Channel* next = joined(lock)) next->slot(attribute).slide(value, frames);
    finishSlides(lock);
}

void Channel::followLoudness(const Lock& /*lock*/) {
    m_voice.setLoudness(loudnessOf(m_replayGain, m_engine.loudness), loudnessFrames);
}

const Attribute& Channel::attribute(const Lock& /*lock*/, DWORD attribute) const {
    return attribute == BASS_ATTRIB_VOL ? m_voice.gain() : m_voice.pan();
}

// ---- syncs ----

void Channel::addSync(const Lock& lock, const Sync& sync) {
    m_syncs.push_back(sync);
    const bool over = m_state == StreamState::ended || m_state == StreamState::failed;
    if (sync.type != BASS_SYNC_END || !over || m_endReported) return;
    m_endUnclaimed = false;
    postEnd(lock);
}

void Channel::postEnd(const Lock& /*lock*/) {
    m_engine.syncs.post(
        {.kind = MixEvent::Kind::end, .stream = m_handle, .generation = m_voice.generation()});
}

bool Channel::isCurrent(const Lock& /*lock*/, const MixEvent& event) const {
    return event.generation == m_voice.generation();
}

std::vector<Sync> Channel::takeSyncs(const Lock& lock, const MixEvent& event) {
    switch (event.kind) {
    case MixEvent::Kind::slide:
        if (!slot(event.attribute).slidePlayed(event.slide)) return {};
        if (m_seek && !m_seekBegun && !isFadingOut()) beginSeek(lock);
        return takeSyncs(lock, BASS_SYNC_SLIDE);
    case MixEvent::Kind::end:
        return isCurrent(lock, event) && end(lock) ? takeEndSyncs(lock) : std::vector<Sync>();
    case MixEvent::Kind::sinkRemoved:
        return takeSyncs(lock, BASS_SYNC_SINK_REMOVED);
    }
    return {};
}

/// Returns false when the end is ignored.
bool Channel::end(const Lock& lock) {
    if (m_state == StreamState::playing && m_seek) {
        beginSeek(lock); // the stream ended while a seek waited for a fade
        return false;
    }
    Channel* const next = joined(lock);
    const bool over = m_state == StreamState::ended || m_state == StreamState::failed;
    if (!over && !apply(lock, StreamEvent::end)) return false;
    if (next) next->playJoined(lock);
    return true;
}

std::vector<Sync> Channel::takeEndSyncs(const Lock& lock) {
    auto due = takeSyncs(lock, BASS_SYNC_END);
    if (!due.empty()) m_endReported = true;
    m_endUnclaimed = due.empty() && !m_voice.isClaimed();
    return due;
}

std::vector<Sync> Channel::takeSyncs(const Lock& /*lock*/, DWORD type) {
    std::vector<Sync> due;
    std::ranges::copy_if(m_syncs, std::back_inserter(due), [type](const Sync& s) { return s.type == type; });
    std::erase_if(m_syncs, [type](const Sync& sync) { return sync.type == type && sync.once; });
    return due;
}

// ---- the stream that follows ----

void Channel::playJoined(const Lock& lock) {
    if (const auto former = m_former.lock()) {
        m_voice.gain().adopt(former->m_voice.gain());
        m_voice.pan().adopt(former->m_voice.pan());
    }
    m_former.reset();
    apply(lock, StreamEvent::joined);
}

void Channel::setNext(const Lock& lock, SourceName next) {
    if (next == m_nextName) return;
    m_nextName = std::move(next);
    prepareNextIfDue(lock);
    linkNext(lock);
}

std::shared_ptr<Channel> Channel::takeNext(const Lock& lock) {
    m_nextName = {};
    m_voice.setNext(nullptr);
    m_voice.setNextPending(false);
    if (joined(lock)) {
        discardMixed(lock);
        m_engine.output.dropQueued();
        attach(lock);
    }
    if (m_next) m_next->m_former.reset();
    return std::exchange(m_next, nullptr);
}

void Channel::prepareNextIfDue(const Lock& lock) {
    if (m_nextName.kind == BASS_SOURCE_NONE || m_next || !exists(lock)) return;
    const std::int64_t decoded =
        m_voice.playedFrame(m_engine.output.playedFrame()) + static_cast<std::int64_t>(m_voice.readable());
    const bool nearEnd = m_length && *m_length - decoded <= prepareFrames;
    if (!nearEnd && !m_voice.isComplete()) return;
    m_next = m_engine.createStream(lock, m_nextName);
    m_next->m_former = weak_from_this();
    m_next->m_voice.setClaimed(false);
}

/// Lets the mixer continue with the next stream if it has enough frames.
void Channel::linkNext(const Lock& /*lock*/) {
    const bool ready =
        m_next && m_next->m_state == StreamState::stopped && m_next->m_open && m_next->isFilled();
    const bool failed = m_next && m_next->m_state == StreamState::failed;
    m_voice.setNext(ready && !m_seek ? &m_next->m_voice : nullptr);
    m_voice.setNextPending(m_nextName.kind != BASS_SOURCE_NONE && !ready && !failed);
    m_engine.output.wakeOutput();
}

// ---- called by the worker ----

void Channel::opened(const Lock& lock, std::optional<std::int64_t> length, const ReplayGain& gain) {
    m_open = true;
    m_length = length;
    m_replayGain = gain;
    followLoudness(lock);
    if (!m_seek) return;
    if (!length) {
        m_seek.reset();
        return startIfFilled(lock);
    }
    m_seek = std::min(*m_seek, *length);
}

void Channel::failed(const Lock& lock, Failure failure, int httpStatus) {
    m_failure = failure;
    m_httpStatus = httpStatus;
    if (!apply(lock, StreamEvent::failure)) return;
    postEnd(lock);
    if (const auto former = m_former.lock()) former->linkNext(lock);
}

void Channel::wrote(const Lock& lock) {
    if (!m_wasFilled && isFilled()) {
        m_wasFilled = true;
        if (const auto former = m_former.lock()) former->linkNext(lock);
    }
    startIfFilled(lock);
    prepareNextIfDue(lock);
    m_engine.output.wakeOutput();
}

void Channel::readAll(const Lock& lock, bool broken) {
    if (broken && isNetwork()) m_failure = Failure::lost;
    m_voice.complete();
    wrote(lock);
    linkNext(lock);
}

void Channel::tagsChanged(const Lock& /*lock*/, StreamTags tags) {
    if (m_tags.size() == maxTagsAhead) m_tags.pop_back();
    m_tags.push_back({m_voice.decodedFrame(), std::move(tags)});
}

void Channel::sought(const Lock& lock, std::int64_t frame, bool reached) {
    if (!m_seekBegun || m_seek != frame) return; // another seek has replaced it
    m_seek.reset();
    m_seekBegun = false;
    if (reached) {
        m_voice.restartAt(frame);
        m_endReported = false;
        m_failure = Failure::none;
    }
    linkNext(lock);
    startIfFilled(lock);
}

} // namespace bass
