#include "platform/bass/Library.h"

#include "platform/bass/StreamWorker.h"

#include <thread>
#include <utility>

namespace bass {

Library::Library() : m_engine(*this, *this) {
    m_engine.createStream = [this](const Lock& lock, const SourceName& name) { return add(lock, name); };
}

Library& Library::instance() {
    static Library& library = *std::unique_ptr<Library>(new Library).release();
    return library;
}

bool Library::open() {
    const Lock lock(m_engine.mutex);
    if (m_open || !m_engine.output.open()) return false;
    m_engine.syncs.start();
    m_open = true;
    return true;
}

bool Library::close(std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    {
        const Lock lock(m_engine.mutex);
        if (!std::exchange(m_open, false)) return false;
        while (!m_channels.empty())
            release(lock, *m_channels.begin()->second);
        m_orphan.reset();
    }
    m_engine.syncs.stop();
    m_engine.output.close(limit);
    while (m_engine.workers > 0 && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return true;
}

// ---- streams ----

std::uint32_t Library::create(const SourceName& name) {
    const Lock lock(m_engine.mutex);
    if (!m_open) return 0;
    auto channel = claim(lock, name);
    if (!channel) channel = add(lock, name);
    m_engine.output.prepare();
    return channel->handle();
}

std::shared_ptr<Channel> Library::add(const Lock& lock, const SourceName& name) {
    const std::uint32_t handle = ++m_lastHandle;
    auto channel = std::make_shared<Channel>(handle, name, m_engine);
    m_channels.emplace(handle, channel);
    StreamWorker::start(lock, channel);
    return channel;
}

/// Takes the stream that was made to follow one that has ended or was freed, if it is of this source. One of
/// another source is released.
std::shared_ptr<Channel> Library::claim(const Lock& lock, const SourceName& name) {
    auto waiting = std::exchange(m_orphan, nullptr);
    for (auto former = m_channels.begin(); !waiting && former != m_channels.end(); ++former)
        if (former->second->hasEnded(lock)) waiting = former->second->takeNext(lock);
    if (!waiting) return nullptr;
    if (waiting->name() == name) {
        waiting->claim(lock);
        return waiting;
    }
    release(lock, *waiting);
    return nullptr;
}

std::shared_ptr<Channel> Library::findAny(const Lock& /*lock*/, std::uint32_t handle) {
    const auto found = m_channels.find(handle);
    return found == m_channels.end() ? nullptr : found->second;
}

std::shared_ptr<Channel> Library::find(const Lock& lock, std::uint32_t handle) {
    auto channel = findAny(lock, handle);
    return channel && channel->exists(lock) ? channel : nullptr;
}

bool Library::free(std::uint32_t handle) {
    {
        const Lock lock(m_engine.mutex);
        const auto channel = findAny(lock, handle);
        if (!channel) return false;
        release(lock, *channel);
        auto next = channel->takeNext(lock);
        if (next) {
            if (m_orphan) release(lock, *m_orphan);
            m_orphan = std::move(next);
        }
    }
    m_engine.syncs.finish(handle);
    return true;
}

void Library::release(const Lock& lock, Channel& channel) {
    channel.release(lock);
    m_channels.erase(channel.handle());
}

bool Library::setNext(std::uint32_t handle, const SourceName& next) {
    const Lock lock(m_engine.mutex);
    const auto channel = find(lock, handle);
    if (!channel) return false;
    if (channel->isFollowedBy(lock, next)) return true;
    if (const auto former = channel->takeNext(lock)) release(lock, *former);
    channel->setNext(lock, next);
    return true;
}

void Library::setLoudness(ReplayGainMode mode) {
    const Lock lock(m_engine.mutex);
    if (std::exchange(m_engine.loudness, mode) == mode) return;
    for (const auto& [handle, channel] : m_channels)
        channel->followLoudness(lock);
}

// ---- taps ----

bool Library::setTap(std::uint32_t handle, SampleTap& tap) {
    const Lock lock(m_engine.mutex);
    const auto channel = find(lock, handle);
    if (channel) channel->setTap(lock, &tap);
    return channel != nullptr;
}

void Library::removeTap(const SampleTap& tap) {
    const Lock lock(m_engine.mutex);
    for (int pass = 0; pass < 2; ++pass) { // a join during the first pass may pass the tap on
        for (const auto& [handle, channel] : m_channels)
            if (channel->tap(lock) == &tap) channel->setTap(lock, nullptr);
        m_engine.mixer.settle();
    }
}

// ---- called on the sync thread ----

void Library::setBusy(bool busy) {
    m_engine.mixer.setSyncing(busy);
    if (!busy) m_engine.output.wakeOutput();
}

bool Library::isCurrent(const MixEvent& event) {
    const Lock lock(m_engine.mutex);
    const auto channel = findAny(lock, event.stream);
    return channel && channel->isCurrent(lock, event);
}

std::vector<Sync> Library::takeSyncs(const MixEvent& event) {
    const Lock lock(m_engine.mutex);
    const auto channel = findAny(lock, event.stream);
    if (!channel) return {};
    return channel->takeSyncs(lock, event);
}

bool Library::exists(std::uint32_t stream) {
    const Lock lock(m_engine.mutex);
    return findAny(lock, stream) != nullptr;
}

// ---- called on the control thread ----

void Library::rewind(std::uint64_t played) {
    const Lock lock(m_engine.mutex);
    for (const auto& [handle, channel] : m_channels)
        channel->rewind(lock, played);
}

void Library::deviceMissing() {
    const Lock lock(m_engine.mutex);
    for (const auto& [handle, channel] : m_channels)
        channel->finishSlides(lock);
}

void Library::sinkRemoved() {
    const Lock lock(m_engine.mutex);
    for (const auto& [handle, channel] : m_channels)
        m_engine.syncs.post({.kind = MixEvent::Kind::sinkRemoved, .stream = handle});
}

} // namespace bass
