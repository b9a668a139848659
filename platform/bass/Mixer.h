#pragma once

#include "platform/bass/SpscQueue.h"
#include "platform/bass/output/Output.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>

namespace bass {

class Channel;

/// Something that will be heard at a frame of the device's timeline.
struct MixEvent {
    enum class Kind { end, slide };
    Kind kind = Kind::end;
    std::uint32_t channel = 0;    ///< The handle.
    std::uint32_t generation = 0; ///< The channel's, when it was mixed.
    std::uint32_t slide = 0;      ///< Which slide of which attribute.
    std::uint32_t attribute = 0;
    std::uint64_t deviceFrame = 0;
};

/// Sums the attached channels into what the device asks for. The device's timeline counts every frame ever
/// mixed.
///
/// Threads: `render` and `post` are the audio thread's and never lock, allocate or block. `attach` and
/// `detach` may come from any other thread, for one channel one at a time; when `detach` returns, the audio
/// thread is done with the channel. `takeEvent` is the sync thread's.
class Mixer : public Renderer {
public:
    /// `onEvent` wakes the sync thread; it must be safe on the audio thread.
    explicit Mixer(std::function<void()> onEvent) : m_onEvent(std::move(onEvent)) {}

    /// False when too many channels play.
    [[nodiscard]] bool attach(Channel& channel);
    void detach(const Channel& channel);
    /// Waits until the audio thread is done with what it holds now.
    void settle() const;
    int attachedCount() const { return m_attached.load(); }

    std::uint64_t mixedFrames() const { return m_mixed.load(); }

    void render(std::span<float> out) noexcept override;
    bool isReady(std::size_t frames) const noexcept override;
    void hurry() const noexcept override;

    /// False when the sync thread is too far behind to take another.
    bool post(const MixEvent& event) noexcept;
    std::optional<MixEvent> takeEvent() { return m_events.take(); }

private:
    static constexpr std::size_t mostChannels = 32;

    std::function<void()> m_onEvent;
    std::array<std::atomic<Channel*>, mostChannels> m_channels{};
    std::atomic<int> m_attached{0};
    /// Odd while the audio thread may hold a channel.
    mutable std::atomic<std::uint32_t> m_turn{0};
    std::atomic<std::uint64_t> m_mixed{0};
    SpscQueue<MixEvent, 256> m_events;
};

} // namespace bass
