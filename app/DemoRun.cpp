#include "app/DemoRun.h"

#include "app/FenAppDelegate.h"
#include "controls/CustomWindow.h"
#include "core/player/TulPlayer.h"

#include <QApplication>
#include <QPixmap>
#include <QWidget>

#include <cstdio>
#include <utility>

namespace app {
namespace {

using namespace std::chrono_literals;

constexpr auto lookEvery = 100ms;
constexpr qint64 maxRunMs = 30000;
constexpr qint64 screenshotAtMs = 3000;

} // namespace

DemoRun::DemoRun(FenAppDelegate& delegate, QString screenshot)
    : m_delegate(delegate), m_screenshot(std::move(screenshot)) {
    m_running.start();
    m_polling.callOnTimeout([this] { look(); });
    m_polling.start(lookEvery);
}

void DemoRun::look() {
    const TulStream* stream = m_delegate.player->stream.get();
    const bool plays = m_delegate.player->playbackState() == TulPlaybackState::playing;
    if (plays && m_lastHandle != stream->handle) announceTrack();
    if (!m_photographed && m_running.elapsed() > screenshotAtMs) takeScreenshot();
    const bool playedOnce = m_started > m_delegate.player->playlist->entryCount();
    if (playedOnce || m_running.elapsed() > maxRunMs) finish();
}

void DemoRun::announceTrack() {
    const TulStream& stream = *m_delegate.player->stream;
    m_lastHandle = stream.handle;
    if (++m_started > m_delegate.player->playlist->entryCount()) return;
    const std::string by = stream.artist.empty() ? std::string() : " by " + stream.artist;
    std::printf("Playing %s%s (%.1f s)\n", stream.title.c_str(), by.c_str(), stream.length());
    std::fflush(stdout);
}

void DemoRun::takeScreenshot() {
    m_photographed = true;
    if (m_delegate.window->grab().save(m_screenshot))
        std::printf("The window is in %s\n", qUtf8Printable(m_screenshot));
    std::fflush(stdout);
}

void DemoRun::finish() {
    m_polling.stop();
    if (!m_photographed) takeScreenshot();
    if (m_started == 0) std::printf("Nothing could be played.\n");
    QApplication::exit(m_started == 0 ? 1 : 0);
}

} // namespace app
