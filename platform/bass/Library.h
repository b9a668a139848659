#pragma once

#include "platform/bass/Channel.h"
#include "platform/bass/Mixer.h"
#include "platform/bass/SyncThread.h"
#include "platform/bass/output/OutputControl.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace bass {

/// Everything behind bass.h: the channels by their handles, the mixer, the device and the sync thread. One a
/// process.
///
/// Threads: every call from any thread but the audio thread. Lock order: none of the calls holds `m_mutex`
/// while it calls into a channel.
class Library {
public:
    /// Ends every channel and thread.
    ~Library();

    static Library& instance();

    /// False when there is no device, or when it was opened before.
    [[nodiscard]] bool open();

    /// A new channel over the source; 0 without a source or an open device.
    std::uint32_t add(std::unique_ptr<Source> source);
    /// Null for 0, for a handle never given, and for one that was freed.
    std::shared_ptr<Channel> find(std::uint32_t handle);
    bool free(std::uint32_t handle);

    std::uint32_t newSyncHandle() { return ++m_lastSync; }

private:
    Library();
    void rewindAll(std::uint64_t heard);

    std::mutex m_mutex;
    bool m_open = false; ///< Guarded by m_mutex, as the next two.
    std::map<std::uint32_t, std::shared_ptr<Channel>> m_channels;
    std::uint32_t m_lastHandle = 0; ///< Handles are never given twice.
    std::atomic<std::uint32_t> m_lastSync{0};
    Mixer m_mixer;
    OutputControl m_output;
    SyncThread m_syncs;
};

} // namespace bass
