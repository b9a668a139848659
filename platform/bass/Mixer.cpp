#include "platform/bass/Mixer.h"

#include "platform/bass/Channel.h"

#include <algorithm>
#include <thread>

namespace bass {

bool Mixer::attach(Channel& channel) {
    for (auto& slot : m_channels) {
        Channel* none = nullptr;
        if (!slot.compare_exchange_strong(none, &channel)) continue;
        ++m_attached;
        return true;
    }
    return false;
}

void Mixer::detach(const Channel& channel) {
    for (auto& slot : m_channels) {
        if (slot.load() != &channel) continue;
        slot.store(nullptr);
        --m_attached;
    }
    settle();
}

void Mixer::settle() const {
    const std::uint32_t turn = m_turn.load();
    if (turn % 2 == 0) return;
    while (m_turn.load() == turn)
        std::this_thread::yield();
}

void Mixer::render(std::span<float> out) noexcept {
    std::fill(out.begin(), out.end(), 0.0F);
    m_turn.fetch_add(1);
    const std::uint64_t first = m_mixed.load(std::memory_order_relaxed);
    for (auto& slot : m_channels)
        if (Channel* channel = slot.load()) channel->mix(out, first);
    m_turn.fetch_add(1);
    m_mixed.store(first + out.size() / channelCount);
}

bool Mixer::isReady(std::size_t frames) const noexcept {
    m_turn.fetch_add(1);
    bool ready = m_attached > 0;
    for (const auto& slot : m_channels)
        if (const Channel* channel = slot.load()) ready = ready && channel->isReady(frames);
    m_turn.fetch_add(1);
    return ready;
}

void Mixer::hurry() const noexcept {
    m_turn.fetch_add(1);
    for (const auto& slot : m_channels)
        if (Channel* channel = slot.load()) channel->hurry();
    m_turn.fetch_add(1);
}

bool Mixer::post(const MixEvent& event) noexcept {
    const bool taken = m_events.push(event);
    m_onEvent();
    return taken;
}

} // namespace bass
