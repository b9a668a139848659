#pragma once

#include "platform/bass/Voice.h"
#include "platform/bass/output/Output.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>

namespace bass {

/// Sums the attached voices into the device's buffer. The device's timeline counts all frames mixed since the
/// start.
///
/// Threads: `render` and `isReady` are called on the audio thread, and never lock, allocate or block;
/// `attach`, `detach` and `settle` under the engine's lock; `takeEvent` on the sync thread.
class Mixer : public Renderer {
public:
    /// `onEvent` wakes the sync thread. Called on the audio thread.
    explicit Mixer(std::function<void()> onEvent) : m_onEvent(std::move(onEvent)) {}

    /// A voice beyond maxVoices stays silent.
    void attach(Voice& voice);
    /// When this returns, the audio thread no longer uses the voice. If it has continued with the next one
    /// (Voice::hasJoined), that one stays attached.
    void detach(const Voice& voice);
    /// Waits for the callback under way, so that the audio thread sees all earlier stores.
    void settle() const;
    int attachedCount() const { return m_attached.load(); }

    std::uint64_t mixedFrames() const { return m_mixed.load(); }

    void render(std::span<float> out) noexcept override;
    bool isReady(std::size_t frames) const noexcept override;

    std::optional<MixEvent> takeEvent() { return m_events.take(); }
    /// Set while the sync thread handles events. An output without a clock waits meanwhile, so that the
    /// changes a sync makes take effect at its frame.
    void setSyncing(bool syncing) { m_syncing = syncing; }

private:
    static constexpr std::size_t maxVoices = 32;

    std::function<void()> m_onEvent;
    std::array<std::atomic<Voice*>, maxVoices> m_voices{};
    std::atomic<int> m_attached{0};
    /// Odd while the audio thread may hold a voice.
    mutable std::atomic<std::uint32_t> m_turn{0};
    std::atomic<std::uint64_t> m_mixed{0};
    EventRing m_events{256};
    std::atomic<bool> m_syncing{false};
};

} // namespace bass
