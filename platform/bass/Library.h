#pragma once

#include "platform/bass/Channel.h"
#include "platform/bass/Engine.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>

namespace bass {

/// Everything behind bass.h: the streams by their handles, the mixer, the device and the sync thread. One a
/// process, which is never destroyed: a thread that nothing can end may still use it while the process exits.
///
/// Threads: every call from any thread but the audio thread.
class Library : private SyncEvents, private OutputEvents {
public:
    using Lock = Engine::Lock;

    static Library& instance();

    /// False when no device could ever be opened, or when it was opened before.
    [[nodiscard]] bool open();
    /// Ends every stream, the device and the sync thread; threads that hang are left behind after `limit`.
    /// False when it was not open.
    bool close(std::chrono::milliseconds limit);

    [[nodiscard]] Lock lock() { return Lock(m_engine.mutex); }
    /// A stream of the source, or the one that was already made to follow; 0 without an open library.
    std::uint32_t create(const SourceName& name);
    /// Null for 0, for a handle never given, and for a stream that failed or was freed.
    std::shared_ptr<Channel> find(const Lock& lock, std::uint32_t handle);
    /// The same, but also a stream that failed.
    std::shared_ptr<Channel> findAny(const Lock& lock, std::uint32_t handle);
    bool free(std::uint32_t handle);
    bool setNext(std::uint32_t handle, const SourceName& next);

    bool setTap(std::uint32_t handle, SampleTap& tap);
    /// When this returns the audio thread is done with the tap.
    void removeTap(const SampleTap& tap);

    void setLoudness(ReplayGainMode mode);

    /// What opens sources from now on, in the place of openFile and openUrl.
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
    bool m_open = false; ///< Guarded by the engine's lock, as all below.
    std::map<std::uint32_t, std::shared_ptr<Channel>> m_channels;
    std::shared_ptr<Channel> m_orphan; ///< Was made to follow a stream that has been freed.
    std::uint32_t m_lastHandle = 0;    ///< Handles are never given twice.
    std::uint32_t m_lastSync = 0;
};

} // namespace bass
