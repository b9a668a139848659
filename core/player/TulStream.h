#pragma once

#include "core/player/TulSpectrum.h"
#include "platform/bass/bass.h"

#include <cstdint>
#include <string>

/// One opened source that plays, with the texts of the entry it was opened for. A source that cannot be
/// opened leaves handle 0: it never plays, and its position and length are negative.
///
/// Threads: the owner's thread only, but for `pause`.
class TulStream {
public:
    TulStream() = default;
    TulStream(const TulStream&) = delete;
    TulStream& operator=(const TulStream&) = delete;
    /// Ends the sound and removes the syncs.
    ~TulStream();

    HSTREAM handle = 0;
    std::string title = "(unknown)";
    std::string artist = "(unknown)";
    std::string album = "(unknown)";
    /// What nextInfoLine answers next: 1 the artist, anything else the album.
    std::int32_t infoToggle = 1;
    /// What spectrum() answered last.
    TulSpectrum bars{};

    /// Opens a path or an address (whatever contains "http") and starts it.
    void open(const std::string& source);
    /// Starts, or resumes where it was paused.
    void play();
    /// Fades a playing stream to silence over 300 ms, and then pauses it. Its volume stays at 0.
    void fadeOutAndPause();
    /// Sync callback: pauses the channel it came for.
    static void pause(HSYNC sync, DWORD channel, DWORD data, void* user);

    /// Seconds of what is being heard.
    [[nodiscard]] double position() const;
    void seek(double seconds);
    [[nodiscard]] double length() const;
    /// `callback` is called once, on the library's sync thread, when the last frame has been heard.
    void setEndSync(SYNCPROC* callback);

    /// Playing, and not fading out.
    [[nodiscard]] bool isPlaying() const;
    /// 0 silent .. 1 as stored.
    [[nodiscard]] float volume() const;
    void setVolume(float volume);
    /// -1 left .. 0 middle .. 1 right.
    [[nodiscard]] float balance() const;
    void setBalance(float balance);

    /// Artist and album in turn.
    std::string nextInfoLine();
    TulSpectrum spectrum();

private:
    [[nodiscard]] bool isActive() const;
};
