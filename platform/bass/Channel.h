#pragma once

#include "platform/bass/Attribute.h"
#include "platform/bass/Mixer.h"
#include "platform/bass/RingBuffer.h"
#include "platform/bass/SampleTap.h"
#include "platform/bass/bass.h"
#include "platform/bass/output/OutputControl.h"
#include "platform/bass/source/Source.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace bass {

/// A callback of a channel.
struct Sync {
    HSYNC handle;
    DWORD type; ///< BASS_SYNC_END or BASS_SYNC_SLIDE.
    bool once;
    SYNCPROC* proc;
    void* user;
};

/// One opened stream: its state, its decoding thread, and the ring between that thread and the mixer.
/// Positions are frames of the source.
///
/// Threads: the public calls may come from any thread but the audio thread and take the lock; `mix` and
/// `isReady` are the audio thread's. The decoding thread, "tul-decode", alone reads and seeks the source and
/// writes the ring. What the audio thread owns is touched by others only while the channel is detached from
/// the mixer.
class Channel {
public:
    Channel(DWORD handle, std::unique_ptr<Source> source, Mixer& mixer, OutputControl& output);
    /// Silent at once; ends the decoding thread.
    ~Channel();
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    DWORD active() const;
    bool play(bool restart);
    bool pause();
    /// Silent and without a tap from now on, whatever is still asked of it.
    void retire();
    bool seek(std::int64_t frame);
    std::int64_t position();
    std::optional<std::int64_t> length() const { return m_source->lengthFrames(); }

    void setAttribute(DWORD attribute, float value);
    void slideAttribute(DWORD attribute, float value, std::uint32_t frames);
    float attribute(DWORD attribute) const;
    bool isSliding(DWORD attribute) const;

    void addSync(const Sync& sync);
    /// What is to be called for an event that is heard now; nothing for one that no longer counts.
    /// `slideDone` after that.
    std::vector<Sync> takeSyncs(const MixEvent& event);
    /// Whether the event's place on the device's timeline still means anything.
    bool isCurrent(const MixEvent& event) const;

    /// The last `out.size() / channelCount` frames heard.
    void lastHeard(std::span<float> out);
    /// Null removes it; when the call returns the audio thread is done with the former one. False once
    /// retired.
    bool setTap(SampleTap* tap);

    /// Mixed frames past `heard` on the device's timeline will not be heard: goes back to there.
    void rewind(std::uint64_t heard);

    void mix(std::span<float> out, std::uint64_t deviceFrame) noexcept;
    bool isReady(std::size_t frames) const noexcept;
    void hurry() noexcept { m_work.notify_all(); }

private:
    enum class State { stopped, playing, paused, retired };
    /// From this frame of the device's timeline on, the source's frames follow one another.
    struct Run {
        std::uint64_t deviceFrame;
        std::int64_t sourceFrame;
    };
    using Lock = std::unique_lock<std::mutex>;

    Attribute& slot(DWORD attribute) { return attribute == BASS_ATTRIB_VOL ? m_gain : m_pan; }
    const Attribute& slot(DWORD attribute) const { return attribute == BASS_ATTRIB_VOL ? m_gain : m_pan; }

    void attachIfFilled(const Lock& lock);
    void detach(const Lock& lock);
    void rewind(const Lock& lock, std::uint64_t heard);
    std::int64_t heardFrame(const Lock& lock, std::uint64_t heard);
    void startAt(const Lock& lock, std::int64_t frame);

    void decode(const std::stop_token& stop);
    void seekSource(Lock& lock);
    void stayAtEnd(const Lock& lock);
    void readSource(Lock& lock, std::span<float> chunk, const std::stop_token& stop);

    void mixFrames(std::span<float> out, std::size_t frames) noexcept;
    void postEvents(std::uint64_t deviceFrame) noexcept;

    const DWORD m_handle;
    std::unique_ptr<Source> m_source;
    Mixer& m_mixer;
    OutputControl& m_output;
    RingBuffer m_ring;
    Attribute m_gain{1.0F};
    Attribute m_pan{0.0F};
    std::atomic<SampleTap*> m_tap{nullptr};
    std::atomic<bool> m_decodedAll{false}; ///< The ring gets no more. Set after the last write.
    std::atomic<bool> m_dry{false};        ///< The mixer waits for frames.
    std::atomic<std::int64_t> m_mixed{0};  ///< The source's frame that is mixed next.
    std::atomic<std::uint32_t> m_generation{
        0}; ///< Of the meaning of mixed frames; changes detached, under the lock.

    bool m_broken = true; ///< Audio thread, as the next two: the next frame begins a run.
    bool m_endSent = false;
    bool m_unmixed = true;     ///< Nothing has ever been mixed: there is nothing that could click.
    SpscQueue<Run, 64> m_runs; ///< From the audio thread to who holds the lock.

    mutable std::mutex m_mutex;
    State m_state = State::stopped; ///< Guarded by m_mutex, as all below.
    bool m_attached = false;
    bool m_atEnd = false;
    std::optional<std::int64_t> m_seek; ///< Asked for, not done.
    std::optional<Run> m_run;           ///< The one being heard.
    std::int64_t m_startFrame = 0;      ///< Heard while no run is.
    std::vector<Sync> m_syncs;
    std::condition_variable_any m_work;
    std::jthread m_thread; ///< Last: it uses all above.
};

} // namespace bass
