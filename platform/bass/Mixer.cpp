#include "platform/bass/Mixer.h"

#include <algorithm>
#include <thread>

namespace bass {

void Mixer::attach(Voice& voice) {
    for (auto& slot : m_voices) {
        Voice* none = nullptr;
        if (!slot.compare_exchange_strong(none, &voice)) continue;
        ++m_attached;
        return;
    }
}

void Mixer::detach(const Voice& voice) {
    for (auto& slot : m_voices) {
        Voice* held = slot.load();
        if (held != &voice || !slot.compare_exchange_strong(held, nullptr)) continue;
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
    const std::span<Frame> frames = framesOf(out);
    m_turn.fetch_add(1);
    const std::uint64_t first = m_mixed.load(std::memory_order_relaxed);
    for (auto& slot : m_voices) {
        Voice* voice = slot.load();
        if (!voice) continue;
        Voice* const last = voice->mix(frames, first, m_events);
        // Not if the voice was detached meanwhile: then the next one must not be mixed either.
        if (last != voice) slot.compare_exchange_strong(voice, last);
    }
    m_mixed.store(first + frames.size()); // before the turn ends, so that `settle` waits for it
    m_turn.fetch_add(1);
    if (m_events.readable() > 0) m_onEvent();
}

bool Mixer::isReady(std::size_t frames) const noexcept {
    if (m_events.readable() > 0 || m_syncing) return false;
    m_turn.fetch_add(1);
    bool ready = m_attached > 0;
    for (const auto& slot : m_voices)
        if (const Voice* voice = slot.load()) ready = ready && voice->isReady(frames);
    m_turn.fetch_add(1);
    return ready;
}

} // namespace bass
