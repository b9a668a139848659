#pragma once

#include "platform/bass/Voice.h"
#include "platform/bass/output/Output.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>

namespace bass {

/// Sums the attached voices into what the device asks for. The device's timeline counts every frame ever
/// mixed.
///
/// Threads: `render` and `isReady` are the audio thread's and never lock, allocate or block. `attach`,
/// `detach` and `settle` under the engine's lock. `takeEvent` is the sync thread's.
class Mixer : public Renderer {
public:
    /// `onEvent` wakes the sync thread; it must be safe on the audio thread.
    explicit Mixer(std::function<void()> onEvent) : m_onEvent(std::move(onEvent)) {}

    /// With maxVoices attached already, another one stays silent.
    void attach(Voice& voice);
    /// When this returns, the audio thread is done with the voice. It may have continued with the one that
    /// follows (Voice::hasJoined), which then stays.
    void detach(const Voice& voice);
    /// Waits until the audio thread has seen what was stored before.
    void settle() const;
    int attachedCount() const { return m_attached.load(); }

    std::uint64_t mixedFrames() const { return m_mixed.load(); }

    void render(std::span<float> out) noexcept override;
    bool isReady(std::size_t frames) const noexcept override;

    std::optional<MixEvent> takeEvent() { return m_events.take(); }
    /// The sync thread is at work. An output without a clock waits meanwhile: what a sync orders is to take
    /// effect at its frame.
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
