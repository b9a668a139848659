#pragma once

#include "platform/bass/Mixer.h"
#include "platform/bass/SyncThread.h"
#include "platform/bass/bass.h"
#include "platform/bass/output/OutputControl.h"
#include "platform/bass/source/Source.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace bass {

class Channel;

/// A source, as passed to a creation call.
struct SourceName {
    DWORD kind = BASS_SOURCE_NONE;
    std::string text; ///< A path or an address, as bytes.
    bool operator==(const SourceName&) const = default;
};

/// Opens a source. Called on the stream's worker.
using OpenSource = std::function<OpenedSource(const SourceName&, std::shared_ptr<Cancel>)>;
[[nodiscard]] OpenedSource openByName(const SourceName& name, std::shared_ptr<Cancel> cancel);

/// State shared by all streams. One lock guards the control side of all of them, because a join concerns two.
/// No call under it waits for a disk, a server or a device.
///
/// Lock order: SyncThread::m_mutex, `mutex`, then the mutexes of OutputControl and SyncThread::m_postedMutex.
struct Engine {
    using Lock = std::unique_lock<std::mutex>;

    Engine(SyncEvents& syncEvents, OutputEvents& outputEvents)
        : mixer([this] { syncs.wake(); }), output(mixer, outputEvents), syncs(syncEvents) {}

    std::mutex mutex;
    ReplayGainMode loudness = ReplayGainMode::off; ///< Guarded by `mutex`.
    Mixer mixer;
    OutputControl output;
    SyncThread syncs;
    /// Makes a stream that is to follow another.
    std::function<std::shared_ptr<Channel>(const Lock&, const SourceName&)> createStream;
    OpenSource openSource = &openByName;
    std::atomic<int> workers{0}; ///< Number of running "tul-stream" threads.
};

} // namespace bass
