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

/// The control side of one stream: its state, its seeks and syncs, and which stream follows it. Positions are
/// frames of the source.
///
/// Threads: every public call needs the engine's lock, which it takes as proof; none waits for anything. The
/// stream's worker is StreamWorker's.
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
    /// What the stream says of the frame that is being played.
    const StreamTags& tags(const Lock& lock);
    /// Silent from now on, whatever is still asked of it; its worker ends by itself.
    void release(const Lock& lock);

    void setAttribute(const Lock& lock, DWORD attribute, float value);
    void slideAttribute(const Lock& lock, DWORD attribute, float value, std::uint32_t frames);
    const Attribute& attribute(const Lock& lock, DWORD attribute) const;

    /// Goes to the loudness that the engine's mode asks for.
    void followLoudness(const Lock& lock);

    void addSync(const Lock& lock, const Sync& sync);
    /// Carries out an event of this stream, and answers the syncs to be called.
    std::vector<Sync> takeSyncs(const Lock& lock, const MixEvent& event);
    bool isCurrent(const Lock& lock, const MixEvent& event) const;

    /// The frames up to the one being played.
    void lastPlayed(const Lock& lock, std::span<Frame> out);
    SampleTap* tap(const Lock& /*lock*/) const { return m_voice.tap(); }
    void setTap(const Lock& /*lock*/, SampleTap* tap) { m_voice.setTap(tap); }

    /// Mixed frames past `played` on the device's timeline will not be played: they are mixed again.
    void rewind(const Lock& lock, std::uint64_t played);
    /// Nothing is mixed while a stream seeks or connects, or while there is no device, so a slide would last
    /// until that is over: it is finished at once.
    void finishSlides(const Lock& lock);

    bool isFollowedBy(const Lock& /*lock*/, const SourceName& name) const { return m_nextName == name; }
    /// Names the source that follows. The stream made for the former one is to be taken away before.
    void setNext(const Lock& lock, SourceName next);
    /// Was made to follow another stream, and gets its owner now.
    void claim(const Lock& /*lock*/) { m_voice.setClaimed(true); }
    /// Gives away the stream that was made for the source that follows; null when there is none.
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
    /// The stream that the mixer has continued with while this one is still being played. An order that was
    /// given to this one before the call has reached the mixer in time, or is to be given to that one, too.
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

    // What the worker reports.
    void opened(const Lock& lock, std::optional<std::int64_t> length, const ReplayGain& gain);
    void failed(const Lock& lock, Failure failure, int httpStatus);
    void wrote(const Lock& lock);
    void readAll(const Lock& lock, bool broken);
    void sought(const Lock& lock, std::int64_t frame, bool reached);
    void told(const Lock& lock, StreamTags tags);

    const DWORD m_handle;
    const SourceName m_name;
    Engine& m_engine;
    std::counting_semaphore<> m_work{0};
    const std::shared_ptr<Cancel> m_cancel = std::make_shared<Cancel>();
    Voice m_voice;

    StreamState m_state = StreamState::stopped; ///< Guarded by the engine's lock, as all below.
    Failure m_failure = Failure::none;
    int m_httpStatus = 0;
    bool m_open = false;
    bool m_wasFilled = false;
    bool m_endReported = false;
    bool m_endUnclaimed = false; ///< Ended as a follower before it had an owner.
    std::optional<std::int64_t> m_length;
    ReplayGain m_replayGain;
    std::optional<std::int64_t> m_seek; ///< Asked for, not done.
    bool m_seekBegun = false;           ///< False while it waits for the end of a fade.
    std::vector<Sync> m_syncs;
    struct TagsFrom {
        std::int64_t frame;
        StreamTags tags;
    };
    std::deque<TagsFrom> m_tags; ///< Of what is played, then of what is decoded ahead.

    SourceName m_nextName;
    std::shared_ptr<Channel> m_next; ///< Made for `m_nextName` shortly before the end.
    std::weak_ptr<Channel> m_former; ///< The one that this is to follow.
};

} // namespace bass
