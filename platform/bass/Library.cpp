#include "platform/bass/Library.h"

#include <utility>
#include <vector>

namespace bass {

Library::Library()
    : m_mixer([this] { m_syncs.wake(); }),
      m_output(m_mixer, [this](std::uint64_t heard) { rewindAll(heard); }),
      m_syncs(m_mixer, m_output, [this](std::uint32_t handle) { return find(handle); }) {}

Library::~Library() {
    std::map<std::uint32_t, std::shared_ptr<Channel>> channels;
    {
        const std::lock_guard lock(m_mutex);
        channels.swap(m_channels);
        m_open = false;
    }
}

Library& Library::instance() {
    static Library library;
    return library;
}

bool Library::open() {
    const std::lock_guard lock(m_mutex);
    if (m_open || !m_output.open()) return false;
    m_syncs.start();
    m_open = true;
    return true;
}

std::uint32_t Library::add(std::unique_ptr<Source> source) {
    if (!source) return 0;
    const std::lock_guard lock(m_mutex);
    if (!m_open) return 0;
    const std::uint32_t handle = ++m_lastHandle;
    m_channels.emplace(handle, std::make_shared<Channel>(handle, std::move(source), m_mixer, m_output));
    return handle;
}

std::shared_ptr<Channel> Library::find(std::uint32_t handle) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_channels.find(handle);
    return found == m_channels.end() ? nullptr : found->second;
}

bool Library::free(std::uint32_t handle) {
    const std::shared_ptr<Channel> channel = find(handle);
    if (!channel) return false;
    // Before the handle goes: who does not find the channel any more may free what tapped it.
    channel->retire();
    {
        const std::lock_guard lock(m_mutex);
        if (m_channels.erase(handle) == 0) return false; // another thread's call was first
    }
    m_syncs.finish(handle);
    return true;
}

void Library::rewindAll(std::uint64_t heard) {
    std::vector<std::shared_ptr<Channel>> channels;
    {
        const std::lock_guard lock(m_mutex);
        for (const auto& [handle, channel] : m_channels)
            channels.push_back(channel);
    }
    for (const auto& channel : channels)
        channel->rewind(heard);
}

} // namespace bass
