#include "app/session/SessionKeeper.h"

#include "app/FenAppDelegate.h"
#include "app/SourceQueue.h"
#include "app/settings/Settings.h"
#include "controls/CustomWindow.h"
#include "core/files/folders.h"
#include "core/files/readFile.h"
#include "core/files/replaceFile.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/PageController.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <fstream>
#include <system_error>

namespace app {
namespace {

/// Every write wakes the disk: while it plays, only the position changes.
constexpr qint64 storedEveryMs = 30000;
/// So much of the window is to be within reach, in points.
constexpr int minReach = 64;

constexpr const char* sessionName = "session.json";
constexpr const char* markName = "session.restoring";

bool placesWindows() {
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

bool isWithinReach(const QRect& window) {
    return std::ranges::any_of(QGuiApplication::screens(), [&](const QScreen* screen) {
        const QRect shown = screen->availableGeometry().intersected(window);
        return shown.width() >= minReach && shown.height() >= minReach;
    });
}

} // namespace

SessionKeeper::SessionKeeper(FenAppDelegate& delegate) : m_delegate(delegate), m_folder(stateFolder()) {
    FileStatus status{};
    const auto text = readFile((m_folder / sessionName).string(), status);
    if (text) m_left = Session::fromJson(QByteArray::fromStdString(*text)).value_or(Session());
    m_stored = m_left;
    std::error_code unknown;
    const bool hasCrashed = std::filesystem::exists(m_folder / markName, unknown);
    if (hasCrashed || !delegate.settings->restoresSession()) m_left.whole.reset();
    if (hasCrashed) finishRestoring();
    if (m_left.whole && m_left.whole->hasList()) m_state = State::toBeRestored;
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, [this] {
        store();
        m_delegate.player->finishSaving();
    });
}

void SessionKeeper::restoreVolume() {
    m_delegate.player->setVolume(static_cast<float>(m_left.volume));
    m_delegate.player->setBalance(static_cast<float>(m_left.balance));
}

void SessionKeeper::restoreWindow() {
    if (!m_left.whole) return;
    CustomWindow& window = *m_delegate.window;
    const auto& place = m_left.whole->place;
    if (place && placesWindows() && isWithinReach({*place, window.size()})) window.move(*place);
    m_delegate.pageController->turnToPage(m_left.whole->page);
    m_delegate.pageControllerDidEndLiveTransition(); // without the slide
}

void SessionKeeper::restoreList(SourceQueue& sources) {
    if (m_state != State::toBeRestored) return;
    run([mark = m_folder / markName] { std::ofstream file(mark); });
    const Session::Whole& left = *m_left.whole;
    sources.restorePlaylist(left.list, left.changedAt, left.resumption,
                            [this](TulPlayer::Opening) { noteListRestored(); });
}

void SessionKeeper::noteListRestored() {
    m_state = State::opening;
    if (m_plays) m_delegate.playerController->playPause();
}

void SessionKeeper::playWhenRestored() {
    m_plays = true;
    if (m_state != State::toBeRestored) m_delegate.playerController->playPause();
}

void SessionKeeper::finishRestoring() {
    m_state = State::restored;
    run([mark = m_folder / markName] {
        std::error_code failed;
        std::filesystem::remove(mark, failed);
    });
}

Session SessionKeeper::now() const {
    const TulPlayer& player = *m_delegate.player;
    Session session{.volume = player.volume, .balance = player.balance, .whole = {}};
    if (!m_delegate.settings->restoresSession()) return session;
    const TulPlaylist& list = *player.playlist;
    const bool isChanged = list.isChanged() && !(list.path.empty() && list.entries.empty());
    session.whole = Session::Whole{.list = list.path,
                                   .changedAt = isChanged ? list.changedAt() : 0,
                                   .resumption = player.resumption(),
                                   .page = m_delegate.pageController->selectedIndex(),
                                   .place = {}};
    if (placesWindows()) session.whole->place = m_delegate.window->pos();
    return session;
}

void SessionKeeper::check() {
    if (m_state == State::toBeRestored) return;
    const TulPlayer& player = *m_delegate.player;
    if (m_state == State::opening && !(player.stream && player.stream->isConnecting())) finishRestoring();
    const Session session = now();
    const bool rests = session.isSameButPosition(m_seen);
    m_seen = session;
    if (!rests || session == m_stored) return;
    const bool onlyPlays = session.isSameButPosition(m_stored) && isStarted(player.playbackState());
    if (!onlyPlays || m_sinceStored.hasExpired(storedEveryMs)) write(session);
}

void SessionKeeper::store() {
    // What was left is still to be restored, or the program ends before there is a window.
    if (m_state == State::toBeRestored || !m_delegate.pageController) return;
    if (m_state == State::opening) finishRestoring();
    const Session session = now();
    if (session != m_stored) write(session);
}

void SessionKeeper::write(const Session& session) {
    m_stored = session;
    m_sinceStored.start();
    run([folder = m_folder, text = session.toJson().toStdString()] {
        if (!folder.empty() && makeFolder(folder))
            static_cast<void>(replaceFile((folder / sessionName).string(), text));
    });
}

void SessionKeeper::run(std::function<void()> job) {
    m_delegate.player->workers.run(Workers::Lane::saving,
                                   [job = std::move(job)](const Workers::Reply&) { job(); });
}

} // namespace app
