#pragma once

#include "platform/bass/Engine.h"
#include "platform/bass/StreamState.h"
#include "platform/bass/Sync.h"
#include "platform/bass/Voice.h"
#include "platform/bass/source/Source.h"

#include <deque>
#include <memory>
#include <optional>
#include <semaphore>
#include <vector>

namespace bass {

/// The control side of one stream: its state, seeks, syncs, and the stream that follows. Positions are frames
/// of the source.
///
/// Threads: every public function needs the engine's lock, passed as an argument; none blocks. StreamWorker
/// runs the stream's worker thread.
class Channel : public std::enable_shared_from_this<Channel> {
public:
    using Lock = Engine::Lock;

    Channel(DWORD handle, SourceName name, Engine& engine);
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    DWORD handle() const { return m_handle; }
    const SourceName& name() const { return m_name; }
    bool exists(const Lock& lock) const;
    bool hasEnded(const Lock& /*lock*/) const { return m_state == StreamState::ended; }

    DWORD active(const Lock& lock) const;
    DWORD status(const Lock& lock, DWORD* httpStatus) const;
    bool play(const Lock& lock, bool restart);
    bool pause(const Lock& lock);
    bool seek(const Lock& lock, std::int64_t frame);
    std::int64_t position(const Lock& lock);
    std::optional<std::int64_t> length(const Lock& /*lock*/) const { return m_length; }
    /// The tags that belong to the frame being played.
    const StreamTags& tags(const Lock& lock);
    /// Frees the stream: it is silent from now on, and its worker ends by itself.
    void release(const Lock& lock);

    void setAttribute(const Lock& lock, DWORD attribute, float value);
    void slideAttribute(const Lock& lock, DWORD attribute, float value, std::uint32_t frames);
    const Attribute& attribute(const Lock& lock, DWORD attribute) const;

    /// Slides to the loudness of the engine's mode.
    void followLoudness(const Lock& lock);

    void addSync(const Lock& lock, const Sync& sync);
    /// Carries out an event of this stream, and returns the syncs to be called.
    std::vector<Sync> takeSyncs(const Lock& lock, const MixEvent& event);
    bool isCurrent(const Lock& lock, const MixEvent& event) const;

    /// Copies the frames up to the one being played.
    void lastPlayed(const Lock& lock, std::span<Frame> out);
    SampleTap* tap(const Lock& /*lock*/) const { return m_voice.tap(); }
    void setTap(const Lock& /*lock*/, SampleTap* tap) { m_voice.setTap(tap); }

    /// Mixes again what was mixed past `played` on the device's timeline, which the device has dropped.
    void rewind(const Lock& lock, std::uint64_t played);
    /// Finishes slides at once while nothing is mixed, because the stream seeks or connects or there is no
    /// device: they would not advance.
    void finishSlides(const Lock& lock);

    bool isFollowedBy(const Lock& /*lock*/, const SourceName& name) const { return m_nextName == name; }
    /// Sets the source that follows. Call `takeNext` before, to remove the stream made for the previous one.
    void setNext(const Lock& lock, SourceName next);
    /// Called when the core has got the handle of a stream that was made to follow another.
    void claim(const Lock& /*lock*/) { m_voice.setClaimed(true); }
    /// Releases the stream that was made to follow; null when there is none.
    std::shared_ptr<Channel> takeNext(const Lock& lock);

private:
    friend class StreamWorker;
    Voice& voice() { return m_voice; }
    Attribute& slot(DWORD attribute) { return attribute == BASS_ATTRIB_VOL ? m_voice.gain() : m_voice.pan(); }
    bool isNetwork() const { return m_name.kind == BASS_SOURCE_URL; }
    bool isFilled() const;
    bool isFadingOut() const {
        return m_state == StreamState::playing && m_voice.gain().isSlidingToSilence();
    }
    /// The following stream, if the mixer has continued with it already; else null. Then a change made to
    /// this stream before the call still takes effect in the mixer; in the other case the caller repeats it
    /// on the returned stream.
    Channel* joined(const Lock& lock) const;

    bool apply(const Lock& lock, StreamEvent event);
    void attach(const Lock& lock);
    void discardMixed(const Lock& lock);
    void discardMixed(const Lock& lock, std::uint64_t played);
    void startIfFilled(const Lock& lock);
    void beginSeek(const Lock& lock);
    void postEnd(const Lock& lock);
    bool end(const Lock& lock);
    std::vector<Sync> takeSyncs(const Lock& lock, DWORD type);
    std::vector<Sync> takeEndSyncs(const Lock& lock);
    void playJoined(const Lock& lock);
    void prepareNextIfDue(const Lock& lock);
    void linkNext(const Lock& lock);

    // Called by the worker.
    void opened(const Lock& lock, std::optional<std::int64_t> length, const ReplayGain& gain);
    void failed(const Lock& lock, Failure failure, int httpStatus);
    void wrote(const Lock& lock);
    void readAll(const Lock& lock, bool broken);
    void sought(const Lock& lock, std::int64_t frame, bool reached);
    void tagsChanged(const Lock& lock, StreamTags tags);

    const DWORD m_handle;
    const SourceName m_name;
    Engine& m_engine;
    std::counting_semaphore<> m_work{0};
    const std::shared_ptr<Cancel> m_cancel = std::make_shared<Cancel>();
    Voice m_voice;

    StreamState m_state = StreamState::stopped; ///< Guarded by the engine's lock, as all following members.
    Failure m_failure = Failure::none;
    int m_httpStatus = 0;
    bool m_open = false;
    bool m_wasFilled = false;
    bool m_endReported = false;
    bool m_endUnclaimed = false; ///< Ended as a follower before the core had its handle.
    std::optional<std::int64_t> m_length;
    ReplayGain m_replayGain;
    std::optional<std::int64_t> m_seek; ///< Target of a seek that is not done yet.
    bool m_seekBegun = false;           ///< False while the seek waits for the end of a fade.
    std::vector<Sync> m_syncs;
    struct TagsFrom {
        std::int64_t frame;
        StreamTags tags;
    };
    std::deque<TagsFrom> m_tags; ///< Tags of the frame being played, then of frames decoded ahead.

    SourceName m_nextName;
    std::shared_ptr<Channel> m_next; ///< Made for `m_nextName` shortly before the end.
    std::weak_ptr<Channel> m_former; ///< The stream that this one is to follow.
};

} // namespace bass
