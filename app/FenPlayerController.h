#pragma once

#include <cstdint>

class FenSpectrumAnalyzerView;
class RixSlider;
class TulPlayer;

namespace app {
class ImageButton;
class ImageView;
class TextField;
} // namespace app

/// The controls area: transport buttons, the three sliders, time and length, two lines of text, the spectrum,
/// and the background that changes with playing.
///
/// Threads: main thread only. It owns none of what it points to: the main layout fills the outlets, the
/// delegate sets the player, both before `initialize`.
class FenPlayerController {
public:
    TulPlayer* player = nullptr;
    /// Slow ticks since the second line was changed last.
    std::int32_t infoChangeTickCounter = 0;
    bool renderSpectrumAnalyzer = false;
    bool showsNotifications = true;

    app::TextField* timeView = nullptr;
    app::TextField* info1View = nullptr;
    app::TextField* info2View = nullptr;
    app::TextField* lengthView = nullptr;
    RixSlider* statusSlider = nullptr;
    RixSlider* volumeSlider = nullptr;
    app::ImageButton* playPauseButton = nullptr;
    FenSpectrumAnalyzerView* spectrumAnalyzerView = nullptr;
    app::ImageView* controlsBackground = nullptr;
    RixSlider* balanceSlider = nullptr;
    app::TextField* volumeCaption = nullptr;
    app::TextField* balanceCaption = nullptr;

    void setPlayer(TulPlayer* newPlayer) { player = newPlayer; }
    void initialize();

    void updatePlayerViewFast();
    void updatePlayerViewSlow();
    /// Shows texts, length and state of a new entry, and prepares its notification.
    void handleSongChange();
    /// Updates the texts of the playing entry.
    void updateSongInfo();
    void updatePlayPauseButtonState();

    void playPause();
    void next();
    void previous();
    void stop();
    /// Limited to the track; ignored when the stream cannot seek.
    void seekTo(double seconds);
    void seekBy(double seconds);
    /// 0 silent .. 1 full; clamped. Not a number means silence.
    void setVolume(double volume);
    void changeVolume(double difference);
    [[nodiscard]] bool isMuted() const;
    void toggleMute();
    void toggleRemainingTime();
    [[nodiscard]] bool showsRemainingTime() const { return m_showsRemainingTime; }
    void statusSliderChange();
    void volumeSliderChange();
    void balanceSliderChange();
    void toggleSpectrumAnalyzer();

private:
    void showSong();
    bool showSongOrError();
    void showLength();
    void showTime();
    void showFailure();
    void announceSongWhenKnown();
    void announceSong();
    void showLook(bool playing);

    bool m_showsPlaying = false;
    bool m_showsFailure = false;
    double m_shownLength = 0.0;
    bool m_showsLive = false;
    bool m_showsRemainingTime = false;
    double m_mutedVolume = 0.5; ///< The volume to restore after muting.
    /// Slow ticks that the notification still waits for tags and picture; 0 when none is pending.
    std::int32_t m_announcementWaits = 0;
};
