#pragma once

#include "core/player/TulSpectrum.h"
#include "core/player/TulStreamTitle.h"
#include "core/playlist/TulFailure.h"
#include "platform/bass/bass.h"

#include <cstdint>
#include <optional>
#include <string>

/// The stream of one source, with the texts of the entry it was opened for. It is opened in the background; a
/// source that cannot be opened never plays, and its position and length are negative.
///
/// Threads: the owner's thread only, except `pause`.
class TulStream {
public:
    TulStream() = default;
    TulStream(const TulStream&) = delete;
    TulStream& operator=(const TulStream&) = delete;
    /// Ends the sound and removes the syncs.
    ~TulStream();

    /// 0 for a source that is neither an address nor a file with an extension.
    HSTREAM handle = 0;
    std::string title = "(unknown)";
    std::string artist = "(unknown)";
    std::string album = "(unknown)";
    /// What nextInfoLine returns next: 1 the artist, any other value the album.
    std::int32_t infoToggle = 1;
    /// What spectrum() returned last.
    TulSpectrum bars{};
    /// What it was opened for.
    std::string source;

    /// Opens a path or an address (a source that contains "http") and plays it.
    void open(const std::string& newSource);
    /// Pauses at the first frame. To be called right after `open`.
    void holdAtStart();
    /// Sets the source that follows without a gap; empty for none. Does nothing when it is set already.
    void setNext(const std::string& next);
    /// Starts, or resumes from a pause.
    void play();
    /// Fades a playing stream out over 300 ms, then pauses it. Its volume stays at 0. A stalled stream is
    /// paused at once.
    void fadeOutAndPause();
    void pauseAtOnce();
    /// As fadeOutAndPause, then seeks to the start; play() begins there unless seek() is called before.
    void fadeOutAndStop();
    /// Sync callback: pauses `channel`.
    static void pause(HSYNC sync, DWORD channel, DWORD data, void* user);

    /// Seconds of the frame that is being played.
    [[nodiscard]] double position() const;
    void seek(double seconds);
    /// Seconds; negative while unknown: for a live stream, or while the source is being opened.
    [[nodiscard]] double length() const;
    /// `callback` is called once, on the library's sync thread, when the last frame has been played or the
    /// stream has failed.
    void setEndSync(SYNCPROC* callback);
    /// `callback` is called on that thread whenever the sink that is played to is removed.
    void setSinkRemovedSync(SYNCPROC* callback);

    /// An open network source without a known length.
    [[nodiscard]] bool isLive() const;
    /// The texts that a network source sends of itself and of what is being played; empty for a file.
    [[nodiscard]] TulStreamTitle streamTitle() const;

    /// No frame has been ready to be played yet.
    [[nodiscard]] bool isConnecting() const;
    /// Why the stream does not play. Kept until the next `open`.
    [[nodiscard]] TulFailure failure() const;
    /// One of the BASS_ACTIVE_ values.
    [[nodiscard]] std::uint32_t active() const;
    /// Playing, and not fading out.
    [[nodiscard]] bool isPlaying() const;
    /// 0 silent .. 1 full.
    [[nodiscard]] float volume() const;
    void setVolume(float volume);
    /// -1 left .. 0 middle .. 1 right.
    [[nodiscard]] float balance() const;
    void setBalance(float balance);

    /// Artist and album alternately; only one of them where the other is empty.
    std::string nextInfoLine();
    TulSpectrum spectrum();

private:
    [[nodiscard]] bool isActive() const;

    std::optional<std::string> m_next; ///< The last argument of setNext.
    bool m_startsOver = false;
};
