#include "platform/bass/Channel.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <pthread.h>

namespace bass {
namespace {

using namespace std::chrono_literals;

/// Frames of a chunk that is decoded at once.
constexpr std::size_t chunkFrames = 2048;
/// There before a channel is mixed: the device asks for its whole latency at once when it starts.
constexpr std::size_t fillFrames = sampleRate / 4;
/// There before a channel that ran dry goes on: without it a slow network would stutter.
constexpr std::size_t refillFrames = sampleRate / 10;
constexpr auto fullWait = 200ms;
constexpr auto starvedWait = 20ms;

} // namespace

Channel::Channel(DWORD handle, std::unique_ptr<Source> source, Mixer& mixer, OutputControl& output)
    : m_handle(handle),
      m_source(std::move(source)),
      m_mixer(mixer),
      m_output(output),
      m_thread([this](const std::stop_token& stop) { decode(stop); }) {}

Channel::~Channel() {
    m_thread.request_stop();
    m_source->interrupt();
    m_thread.join();
    const Lock lock(m_mutex);
    detach(lock);
}

// ---- any thread ----

DWORD Channel::active() const {
    const Lock lock(m_mutex);
    if (m_state == State::paused) return BASS_ACTIVE_PAUSED;
    if (m_state != State::playing) return BASS_ACTIVE_STOPPED;
    return m_dry ? BASS_ACTIVE_STALLED : BASS_ACTIVE_PLAYING;
}

bool Channel::play(bool restart) {
    const Lock lock(m_mutex);
    if (m_state == State::retired) return false;
    if (restart || (m_atEnd && !m_seek)) m_seek = 0;
    if (m_state != State::playing) {
        m_state = State::playing;
        attachIfFilled(lock);
    }
    m_work.notify_all();
    return true;
}

bool Channel::pause() {
    const Lock lock(m_mutex);
    if (m_state != State::playing) return false;
    m_state = State::paused;
    if (m_attached) {
        const std::uint64_t heard = m_output.heardFrame();
        detach(lock);
        rewind(lock, heard);
    }
    return true;
}

void Channel::retire() {
    const Lock lock(m_mutex);
    m_state = State::retired;
    detach(lock);
    m_tap = nullptr;
}

bool Channel::seek(std::int64_t frame) {
    const auto end = length();
    if (!end) return false;
    const Lock lock(m_mutex);
    m_seek = std::clamp<std::int64_t>(frame, 0, *end);
    m_work.notify_all();
    return true;
}

std::int64_t Channel::position() {
    const Lock lock(m_mutex);
    if (m_seek) return *m_seek;
    return heardFrame(lock, m_output.heardFrame());
}

void Channel::setAttribute(DWORD attribute, float value) {
    const Lock lock(m_mutex);
    slot(attribute).set(value);
}

void Channel::slideAttribute(DWORD attribute, float value, std::uint32_t frames) {
    const Lock lock(m_mutex);
    slot(attribute).slide(value, frames);
}

float Channel::attribute(DWORD attribute) const {
    const Lock lock(m_mutex);
    return slot(attribute).get();
}

bool Channel::isSliding(DWORD attribute) const {
    const Lock lock(m_mutex);
    return slot(attribute).isSliding();
}

void Channel::addSync(const Sync& sync) {
    const Lock lock(m_mutex);
    m_syncs.push_back(sync);
}

bool Channel::isCurrent(const MixEvent& event) const {
    return event.generation == m_generation.load();
}

std::vector<Sync> Channel::takeSyncs(const MixEvent& event) {
    const Lock lock(m_mutex);
    DWORD type = BASS_SYNC_SLIDE;
    if (event.kind == MixEvent::Kind::end) {
        if (m_state != State::playing || m_seek || !isCurrent(event)) return {};
        type = BASS_SYNC_END;
        m_state = State::stopped;
        m_atEnd = true;
        detach(lock);
    } else if (!slot(event.attribute).slideHeard(event.slide)) {
        return {};
    }
    std::vector<Sync> due;
    std::copy_if(m_syncs.begin(), m_syncs.end(), std::back_inserter(due),
                 [type](const Sync& sync) { return sync.type == type; });
    std::erase_if(m_syncs, [type](const Sync& sync) { return sync.type == type && sync.once; });
    return due;
}

void Channel::lastHeard(std::span<float> out) {
    const Lock lock(m_mutex);
    const std::int64_t heard = heardFrame(lock, m_output.heardFrame());
    m_ring.copyHistory(static_cast<std::uint64_t>(std::max<std::int64_t>(m_mixed.load() - heard, 0)), out);
}

bool Channel::setTap(SampleTap* tap) {
    const Lock lock(m_mutex);
    if (m_state == State::retired) return false;
    m_tap = tap;
    m_mixer.settle();
    return true;
}

void Channel::rewind(std::uint64_t heard) {
    const Lock lock(m_mutex);
    if (!m_attached) return;
    m_mixer.detach(*this);
    rewind(lock, heard);
    m_attached = m_mixer.attach(*this);
}

// ---- under the lock ----

void Channel::attachIfFilled(const Lock& /*lock*/) {
    if (m_state != State::playing || m_attached || m_seek) return;
    if (m_ring.readable() < fillFrames && !m_decodedAll) return;
    if (m_mixer.attachedCount() == 0) m_output.dropQueued();
    m_attached = m_mixer.attach(*this);
    m_output.changed();
}

void Channel::detach(const Lock& /*lock*/) {
    if (!m_attached) return;
    m_mixer.detach(*this);
    m_attached = false;
    m_output.changed();
}

void Channel::rewind(const Lock& lock, std::uint64_t heard) {
    const std::int64_t mixed = m_mixed.load();
    const std::int64_t unheard = std::max<std::int64_t>(mixed - heardFrame(lock, heard), 0);
    startAt(lock, mixed - static_cast<std::int64_t>(m_ring.rewind(static_cast<std::uint64_t>(unheard))));
}

/// Detached: the next frame mixed is the source's `frame`.
void Channel::startAt(const Lock& /*lock*/, std::int64_t frame) {
    m_mixed = frame;
    m_startFrame = frame;
    m_run.reset();
    while (m_runs.take()) {
    }
    m_broken = true;
    m_endSent = false;
    ++m_generation;
}

std::int64_t Channel::heardFrame(const Lock& /*lock*/, std::uint64_t heard) {
    while (const Run* next = m_runs.front()) {
        if (next->deviceFrame > heard) break;
        m_run = *next;
        m_runs.pop();
    }
    if (!m_run) return m_startFrame;
    const Run* next = m_runs.front();
    const std::int64_t end = next ? next->sourceFrame : m_mixed.load();
    return std::min(end, m_run->sourceFrame + static_cast<std::int64_t>(heard - m_run->deviceFrame));
}

// ---- decoding thread ----

void Channel::decode(const std::stop_token& stop) {
    pthread_setname_np(pthread_self(), "tul-decode");
    std::array<float, chunkFrames * channelCount> chunk;
    Lock lock(m_mutex);
    while (!stop.stop_requested()) {
        const bool full = m_decodedAll || m_ring.writable() < chunkFrames;
        if (m_seek) {
            seekSource(lock);
        } else if (!full) {
            readSource(lock, chunk, stop);
        } else if (m_state == State::playing && !m_decodedAll) {
            // The audio thread cannot wake anybody: look again long before the ring is empty.
            m_work.wait_for(lock, stop, fullWait,
                            [this] { return m_seek || m_ring.readable() < fillFrames; });
        } else {
            m_work.wait(lock, stop, [this] {
                return m_seek ||
                       (!m_decodedAll && (m_state == State::playing || m_ring.writable() >= chunkFrames));
            });
        }
    }
}

void Channel::seekSource(Lock& lock) {
    const std::int64_t target = *m_seek;
    lock.unlock();
    const bool sought = m_source->seek(target);
    lock.lock();
    const bool replaced = m_seek != target;
    if (!replaced) m_seek.reset();
    if (!sought) return stayAtEnd(lock);
    m_atEnd = false;
    if (m_attached) {
        m_mixer.detach(*this);
        m_attached = false;
    }
    m_ring.clear();
    m_decodedAll = false;
    m_dry = false;
    startAt(lock, target);
}

/// A seek was refused. Nothing is left of a source that cannot go back.
void Channel::stayAtEnd(const Lock& lock) {
    if (!m_atEnd) attachIfFilled(lock); // a play that came meanwhile waited for the seek
    if (!m_decodedAll || m_state != State::playing) return;
    if (!m_attached) {
        m_state = State::stopped;
        return;
    }
    // Its end may have been heard, and dropped, while the seek was under way.
    m_mixer.detach(*this);
    m_endSent = false;
    m_attached = m_mixer.attach(*this);
}

void Channel::readSource(Lock& lock, std::span<float> chunk, const std::stop_token& stop) {
    lock.unlock();
    const ReadResult result = m_source->read(chunk);
    lock.lock();
    m_ring.write(chunk.first(result.frames * channelCount));
    if (result.status == ReadResult::Status::end || result.status == ReadResult::Status::failed)
        m_decodedAll = true;
    attachIfFilled(lock);
    m_output.wakeOutput();
    if (result.status == ReadResult::Status::starved && !m_seek)
        m_work.wait_for(lock, stop, starvedWait, [this] { return m_seek.has_value(); });
}

// ---- audio thread ----

bool Channel::isReady(std::size_t frames) const noexcept {
    return m_decodedAll ? !m_endSent : m_ring.readable() >= frames;
}

void Channel::mix(std::span<float> out, std::uint64_t deviceFrame) noexcept {
    const std::size_t wanted = out.size() / channelCount;
    const bool decodedAll = m_decodedAll.load(); // before `readable`: then that is all there will be
    const std::size_t there = m_ring.readable();
    const bool goesOn = !m_dry.load() || decodedAll || there >= refillFrames;
    const std::size_t frames = goesOn ? std::min(wanted, there) : 0;

    m_gain.follow(m_unmixed);
    m_pan.follow(m_unmixed);
    m_unmixed = m_unmixed && frames == 0;
    if (frames > 0 && m_broken) {
        m_runs.push({deviceFrame, m_mixed.load()});
        m_broken = false;
    }
    mixFrames(out, frames);
    const bool ended = decodedAll && frames == there;
    m_dry = frames < wanted && !ended;
    if (frames < wanted) m_broken = true;
    if (ended && !m_endSent) {
        // No room for it now: again with the next frames asked for.
        m_endSent =
            m_mixer.post({MixEvent::Kind::end, m_handle, m_generation.load(), 0, 0, deviceFrame + frames});
    }
    postEvents(deviceFrame + wanted);
}

void Channel::mixFrames(std::span<float> out, std::size_t frames) noexcept {
    float* to = out.data();
    SampleTap* tap = m_tap.load();
    for (const std::span<const float> run : m_ring.peek(frames)) {
        if (tap && !run.empty()) tap->tapped(run);
        for (std::size_t i = 0; i < run.size(); i += channelCount) {
            const float gain = m_gain.next();
            const float pan = m_pan.next();
            to[0] += run[i] * gain * std::min(1.0F, 1.0F - pan);
            to[1] += run[i + 1] * gain * std::min(1.0F, 1.0F + pan);
            to += channelCount;
        }
    }
    m_ring.consume(frames);
    m_mixed += static_cast<std::int64_t>(frames);
    // Slides go on while the channel waits for data: a fade that never ended would never pause it.
    for (std::size_t i = frames; i < out.size() / channelCount; ++i) {
        m_gain.next();
        m_pan.next();
    }
}

void Channel::postEvents(std::uint64_t deviceFrame) noexcept {
    if (const std::uint32_t slide = m_gain.finished())
        m_mixer.post(
            {MixEvent::Kind::slide, m_handle, m_generation.load(), slide, BASS_ATTRIB_VOL, deviceFrame});
    if (const std::uint32_t slide = m_pan.finished())
        m_mixer.post(
            {MixEvent::Kind::slide, m_handle, m_generation.load(), slide, BASS_ATTRIB_PAN, deviceFrame});
}

} // namespace bass
