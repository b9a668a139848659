#include "app/FenPlayerController.h"

#include "app/CoverPicture.h"
#include "app/DisplayText.h"
#include "app/FailureText.h"
#include "app/ImageButton.h"
#include "app/ImageView.h"
#include "app/Skin.h"
#include "app/TextField.h"
#include "controls/FenSpectrumAnalyzerView.h"
#include "controls/RixSlider.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/Bundle.h"
#include "platform/cocoa/Log.h"
#include "platform/cocoa/UserNotificationCenter.h"

#include <QGuiApplication>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace {

/// Slow ticks between two changes of the second line.
constexpr std::int32_t infoChangeTicks = 8;
constexpr std::int32_t announcementTicks = 10;

constexpr double positionStep = 5.0;
constexpr double volumeStep = 0.05;
constexpr double balanceSnap = 0.08;
constexpr std::chrono::milliseconds seekInterval{100};

/// Throws when the bytes have no display text.
QString shownText(const std::string& bytes) {
    auto text = app::displayText(bytes);
    if (!text) throw std::runtime_error("not UTF-8");
    return *text;
}

void setUpSlider(RixSlider& slider, const QString& knob) {
    slider.setKnobImage(cocoa::Image::named(knob));
    slider.cell()->setControlSize(cocoa::ControlSize::mini);
}

QString percentText(double fraction) {
    return QStringLiteral("%1 %").arg(qRound(fraction * 100));
}

QString balanceText(double balance) {
    if (qRound(balance * 100) == 0) return QStringLiteral("Centre");
    return QStringLiteral("%1 %2").arg(balance < 0 ? QStringLiteral("Left") : QStringLiteral("Right"),
                                       percentText(std::abs(balance)));
}

bool isSeen() {
    return QGuiApplication::applicationState() == Qt::ApplicationActive;
}

} // namespace

void FenPlayerController::initialize() {
    info2View->setStringValue(cocoa::Bundle::shortVersionString());
    setUpSlider(*statusSlider, QStringLiteral("slider_knob.png"));
    setUpSlider(*volumeSlider, QStringLiteral("slider_knob_yellow.png"));
    setUpSlider(*balanceSlider, QStringLiteral("slider_knob_yellow.png"));
    statusSlider->setStep(positionStep);
    statusSlider->setActionInterval(seekInterval);
    statusSlider->setShowsValueAtPointer(true);
    app::dressInSkin(*statusSlider); // its tool tip
    statusSlider->setValueText([](double seconds) { return app::timeText(seconds); });
    volumeSlider->setStep(volumeStep);
    volumeSlider->setValueText(&percentText);
    balanceSlider->setSnap(0.0, balanceSnap);
    balanceSlider->setValueText(&balanceText);
    timeView->setAction([this] { toggleRemainingTime(); });
    renderSpectrumAnalyzer = true;
    // The image is opaque: redraws of the spectrum need not draw what is beneath.
    controlsBackground->setAttribute(Qt::WA_OpaquePaintEvent);
    spectrumAnalyzerView->hide();
    lengthView->hide();
    timeView->hide();
    volumeSlider->setDoubleValue(player->volume);
    balanceSlider->setDoubleValue(player->balance);
    showLook(false);
}

void FenPlayerController::updatePlayerViewFast() {
    if (!player->stream || !renderSpectrumAnalyzer) return;
    const TulSpectrum bars = player->stream->spectrum();
    FenSpectrumAnalyzerView::Values values(bars.begin(), bars.end());
    if (spectrumAnalyzerView->spectrumValues() == values) return;
    spectrumAnalyzerView->setSpectrumValues(std::move(values));
    spectrumAnalyzerView->update();
}

void FenPlayerController::updatePlayerViewSlow() {
    // Playing can start and stop without the button: at the end of the list, or when a stream fails.
    const TulPlaybackState state = player->playbackState();
    if (isStarted(state) != m_showsPlaying) updatePlayPauseButtonState();
    if (!player->stream) return;
    if (state == TulPlaybackState::playing) announceSongWhenKnown();
    if (state == TulPlaybackState::failed) return showFailure();
    if (player->stream->length() != m_shownLength || player->stream->isLive() != m_showsLive) showLength();
    if (++infoChangeTickCounter == infoChangeTicks) {
        infoChangeTickCounter = 0;
        if (const auto line = app::displayText(player->stream->nextInfoLine()))
            info2View->setStringValue(*line);
    }
    showTime();
}

void FenPlayerController::showTime() {
    const double position = player->stream->position();
    if (m_shownLength > 0 && !statusSlider->isTracking())
        statusSlider->setDoubleValue(std::max(position, 0.0));
    const bool remaining = m_showsRemainingTime && m_shownLength > 0;
    timeView->setAccessibleName(remaining ? QStringLiteral("Remaining time")
                                          : QStringLiteral("Elapsed time"));
    timeView->setStringValue(remaining ? QStringLiteral("−") + app::timeText(m_shownLength - position)
                                       : app::timeText(position));
}

void FenPlayerController::handleSongChange() {
    // The stream may be gone already, after a double-click in a list that was emptied.
    if (!player->stream) return;
    showLength();
    m_showsFailure = false;
    // No notification if the window is visible when the song starts, even if its texts are read later.
    m_announcementWaits = showSongOrError() && !isSeen() ? announcementTicks : 0;
}

void FenPlayerController::updateSongInfo() {
    if (!player->stream) return;
    // Keep showing the failure, with the new texts.
    if (std::exchange(m_showsFailure, false)) return;
    const bool shown = showSongOrError();
    if (shown && player->stream->isLive() && !isSeen())
        m_announcementWaits = 1; // a new title of a live stream
}

bool FenPlayerController::showSongOrError() {
    infoChangeTickCounter = 0;
    try {
        showSong();
        return true;
    } catch (const std::exception&) {
        cocoa::log(QStringLiteral("Faulty info for view"));
        info1View->setStringValue(QStringLiteral("Error"));
        info2View->setStringValue(QStringLiteral("Got faulty song info"));
        return false;
    }
}

void FenPlayerController::showSong() {
    info1View->setStringValue(shownText(player->stream->title));
    const std::string& artist = player->stream->artist;
    info2View->setStringValue(shownText(artist.empty() ? player->stream->album : artist));
    updatePlayPauseButtonState();
}

/// The length is unknown before the source is open, and for live streams: the knob then stays at the start.
void FenPlayerController::showLength() {
    m_shownLength = player->stream->length();
    const bool known = m_shownLength > 0;
    statusSlider->setEnabled(known);
    statusSlider->setMaxValue(known ? m_shownLength : 1.0);
    if (!known) statusSlider->setDoubleValue(0.0);
    m_showsLive = player->stream->isLive();
    lengthView->setStringValue(m_showsLive ? QStringLiteral("live") : app::timeText(m_shownLength));
}

/// Shows the reason in the first line and the title in the second, until the next start.
void FenPlayerController::showFailure() {
    if (std::exchange(m_showsFailure, true)) return;
    showLength();
    info1View->setStringValue(app::failureText(player->failure(), player->stream->source));
    info2View->setStringValue(app::displayText(player->stream->title).value_or(QString()));
}

/// Sends one notification, which waits a few ticks for tags and picture.
void FenPlayerController::announceSongWhenKnown() {
    if (m_announcementWaits == 0) return;
    if (player->tagReader.isPreparing() && --m_announcementWaits > 0) return;
    m_announcementWaits = 0;
    announceSong();
}

void FenPlayerController::announceSong() {
    const TulPlaylistEntry* const playing = player->playingEntry();
    if (!playing) return;
    const TulPlaylistEntry& entry = *playing;
    cocoa::UserNotification notification;
    const TulStream& stream = *player->stream;
    notification.title = app::displayText(stream.title).value_or(QString());
    const bool namesStation = stream.isLive() && stream.artist.empty();
    notification.informativeText =
        app::displayText(namesStation ? stream.album : stream.artist).value_or(QString());
    // The notification center drops notifications while the window is active: do not decode the picture.
    if (isSeen() || !showsNotifications) return;
    app::decodeCover(
        player->workers, entry, [this, notification, id = entry.id](const QImage& picture) mutable {
            const TulPlaylistEntry* const now = player->playingEntry();
            if (!now || now->id != id || !showsNotifications) return; // another entry plays by now
            notification.contentImage = picture;
            cocoa::UserNotificationCenter::defaultUserNotificationCenter().deliverNotification(notification);
        });
}

void FenPlayerController::updatePlayPauseButtonState() {
    showLook(isStarted(player->playbackState()));
}

void FenPlayerController::showLook(bool playing) {
    m_showsPlaying = playing;
    controlsBackground->setImage(
        cocoa::Image::named(playing ? QStringLiteral("controls_background_with_separator")
                                    : QStringLiteral("controls_background")));
    playPauseButton->setImage(playing ? cocoa::Image() : cocoa::Image::named(QStringLiteral("btn_img_play")));
    playPauseButton->setAccessibleName(playing ? QStringLiteral("Pause") : QStringLiteral("Play"));
    playPauseButton->setToolTip(playPauseButton->accessibleName() + QStringLiteral(" (Space)"));
    spectrumAnalyzerView->setVisible(playing);
    lengthView->setVisible(playing);
    timeView->setVisible(playing);
}

void FenPlayerController::playPause() {
    isStarted(player->playbackState()) ? player->pause() : player->play();
    updatePlayPauseButtonState();
}

void FenPlayerController::next() {
    player->next();
    updatePlayPauseButtonState();
}

void FenPlayerController::previous() {
    player->previous();
    updatePlayPauseButtonState();
}

void FenPlayerController::stop() {
    player->stop();
    updatePlayPauseButtonState();
}

void FenPlayerController::seekTo(double seconds) {
    if (!player->stream || !(player->stream->length() > 0)) return;
    player->stream->seek(std::clamp(seconds, 0.0, player->stream->length()));
    showTime();
}

void FenPlayerController::seekBy(double seconds) {
    if (player->stream) seekTo(player->stream->position() + seconds);
}

void FenPlayerController::setVolume(double volume) {
    const double held = volume > 0.0 ? std::min(volume, 1.0) : 0.0;
    player->setVolume(static_cast<float>(held));
    volumeSlider->setDoubleValue(held);
    volumeCaption->showBriefly(QStringLiteral("VOLUME ") + percentText(held));
}

void FenPlayerController::changeVolume(double difference) {
    // Round to whole steps to avoid drift.
    setVolume(std::round((volumeSlider->doubleValue() + difference) / volumeStep) * volumeStep);
}

bool FenPlayerController::isMuted() const {
    return player->volume == 0.0F;
}

void FenPlayerController::toggleMute() {
    if (isMuted()) return setVolume(m_mutedVolume);
    m_mutedVolume = volumeSlider->doubleValue();
    setVolume(0.0);
}

void FenPlayerController::toggleRemainingTime() {
    m_showsRemainingTime = !m_showsRemainingTime;
    if (player->stream) showTime();
}

void FenPlayerController::statusSliderChange() {
    seekTo(statusSlider->doubleValue());
}

void FenPlayerController::volumeSliderChange() {
    setVolume(volumeSlider->doubleValue());
}

void FenPlayerController::balanceSliderChange() {
    player->setBalance(static_cast<float>(balanceSlider->doubleValue()));
    balanceCaption->showBriefly(balanceText(balanceSlider->doubleValue()).toUpper());
}

void FenPlayerController::toggleSpectrumAnalyzer() {
    renderSpectrumAnalyzer = !renderSpectrumAnalyzer;
    spectrumAnalyzerView->setVisible(renderSpectrumAnalyzer);
}
