#pragma once

#include "platform/bass/Channel.h"
#include "platform/bass/Engine.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>

namespace bass {

/// The implementation of bass.h: streams by handle, mixer, device and sync thread. A singleton that is never
/// destroyed, because a thread that hangs may still use it while the process exits.
///
/// Threads: any but the audio thread.
class Library : private SyncEvents, private OutputEvents {
public:
    using Lock = Engine::Lock;

    static Library& instance();

    /// False when there is no kind of output at all, or when the library is open already.
    [[nodiscard]] bool open();
    /// Ends all streams, the device and the sync thread; abandons threads that hang after `limit`. False when
    /// the library is not open.
    bool close(std::chrono::milliseconds limit);

    [[nodiscard]] Lock lock() { return Lock(m_engine.mutex); }
    /// Makes a stream of the source, or returns the one that was made to follow; 0 while the library is not
    /// open.
    std::uint32_t create(const SourceName& name);
    /// Null for 0, for an unknown handle, and for a stream that failed or was freed.
    std::shared_ptr<Channel> find(const Lock& lock, std::uint32_t handle);
    /// As `find`, but also returns a stream that failed.
    std::shared_ptr<Channel> findAny(const Lock& lock, std::uint32_t handle);
    bool free(std::uint32_t handle);
    bool setNext(std::uint32_t handle, const SourceName& next);

    bool setTap(std::uint32_t handle, SampleTap& tap);
    /// When this returns, the audio thread no longer uses the tap.
    void removeTap(const SampleTap& tap);

    void setLoudness(ReplayGainMode mode);

    /// Replaces the function that opens sources.
    void openWith(OpenSource opener) { m_engine.openSource = std::move(opener); }

    std::uint32_t newSyncHandle(const Lock& /*lock*/) { return ++m_lastSync; }

private:
    Library();
    std::shared_ptr<Channel> add(const Lock& lock, const SourceName& name);
    std::shared_ptr<Channel> claim(const Lock& lock, const SourceName& name);
    void release(const Lock& lock, Channel& channel);

    void setBusy(bool busy) override;
    std::optional<MixEvent> takeMixedEvent() override { return m_engine.mixer.takeEvent(); }
    std::uint64_t playedFrame() override { return m_engine.output.playedFrame(); }
    bool isCurrent(const MixEvent& event) override;
    std::vector<Sync> takeSyncs(const MixEvent& event) override;
    bool exists(std::uint32_t stream) override;

    void rewind(std::uint64_t played) override;
    void deviceMissing() override;
    void sinkRemoved() override;

    Engine m_engine;
    bool m_open = false; ///< Guarded by the engine's lock, as all following members.
    std::map<std::uint32_t, std::shared_ptr<Channel>> m_channels;
    std::shared_ptr<Channel> m_orphan; ///< A stream that was made to follow one that has been freed.
    std::uint32_t m_lastHandle = 0;    ///< Handles are never reused.
    std::uint32_t m_lastSync = 0;
};

} // namespace bass
