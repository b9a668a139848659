#pragma once

#include "core/player/TulSpectrum.h"
#include "core/player/TulStreamTitle.h"
#include "core/playlist/TulFailure.h"
#include "platform/bass/bass.h"

#include <cstdint>
#include <optional>
#include <string>

/// One source that plays, with the texts of the entry it was opened for. It is opened in the background; one
/// that cannot be opened never plays, and its position and length are negative.
///
/// Threads: the owner's thread only, but for `pause`.
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
    /// What nextInfoLine answers next: 1 the artist, anything else the album.
    std::int32_t infoToggle = 1;
    /// What spectrum() answered last.
    TulSpectrum bars{};
    /// What it was opened for.
    std::string source;

    /// Opens a path or an address (whatever contains "http") and starts it.
    void open(const std::string& newSource);
    /// Right after `open`: waits, paused, at the first frame.
    void holdAtStart();
    /// Names the source that is to follow without a gap; empty when none does. Repeating the last one costs
    /// nothing.
    void setNext(const std::string& next);
    /// Starts, or resumes where it was paused.
    void play();
    /// Fades a playing stream to silence over 300 ms, and then pauses it. Its volume stays at 0. A stream
    /// that waits for data is paused at once.
    void fadeOutAndPause();
    void pauseAtOnce();
    /// As fadeOutAndPause, and goes to the start; play() begins there unless seek() is called before.
    void fadeOutAndStop();
    /// Sync callback: pauses the channel it came for.
    static void pause(HSYNC sync, DWORD channel, DWORD data, void* user);

    /// Seconds of what is being heard.
    [[nodiscard]] double position() const;
    void seek(double seconds);
    /// Negative while it is not known: a live stream, or one that is being opened.
    [[nodiscard]] double length() const;
    /// `callback` is called once, on the library's sync thread, when the last frame has been played or the
    /// stream has failed.
    void setEndSync(SYNCPROC* callback);
    /// `callback` is called on that thread whenever the sink that is played to is removed.
    void setSinkRemovedSync(SYNCPROC* callback);

    /// Plays, and has no end that is known.
    [[nodiscard]] bool isLive() const;
    /// What an address says of itself and of the sound that is being played; nothing for a file.
    [[nodiscard]] TulStreamTitle streamTitle() const;

    /// Nothing has been ready to be played yet.
    [[nodiscard]] bool isConnecting() const;
    /// Why it does not play. Kept for as long as the stream is.
    [[nodiscard]] TulFailure failure() const;
    /// One of the BASS_ACTIVE_ values.
    [[nodiscard]] std::uint32_t active() const;
    /// Playing, and not fading out.
    [[nodiscard]] bool isPlaying() const;
    /// 0 silent .. 1 as stored.
    [[nodiscard]] float volume() const;
    void setVolume(float volume);
    /// -1 left .. 0 middle .. 1 right.
    [[nodiscard]] float balance() const;
    void setBalance(float balance);

    /// Artist and album in turn; one of them alone where the other is empty.
    std::string nextInfoLine();
    TulSpectrum spectrum();

private:
    [[nodiscard]] bool isActive() const;

    std::optional<std::string> m_next; ///< What setNext named last.
    bool m_startsOver = false;
};
