#include "app/FenAppDelegate.h"

#include "app/Card.h"
#include "app/Deliveries.h"
#include "app/FenCoverArtController.h"
#include "app/FenPlaylistController.h"
#include "app/FenReleaseNotesController.h"
#include "app/FileDrop.h"
#include "app/PageDots.h"
#include "app/SourceQueue.h"
#include "app/TextField.h"
#include "app/UnsavedChanges.h"
#include "app/WindowSize.h"
#include "app/desktop/Mpris.h"
#include "app/desktop/SleepInhibitor.h"
#include "app/editing/PlaylistEditor.h"
#include "app/session/SessionKeeper.h"
#include "app/settings/Settings.h"
#include "app/settings/TextSize.h"
#include "controls/CustomWindow.h"
#include "controls/FenSpectrumAnalyzerView.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/PageController.h"
#include "platform/cocoa/TableView.h"
#include "platform/cocoa/Timer.h"
#include "platform/cocoa/UserDefaults.h"

#include <QCoreApplication>
#include <QMenu>
#include <QStandardPaths>

#include <algorithm>

namespace {

using namespace std::chrono_literals;

constexpr auto slowInterval = 500ms;
constexpr auto fastInterval = 50ms;
const QString storeKey = QStringLiteral("InternalPlaylistStorage");

const QString playlistPage = QStringLiteral("playlist");
const QString coverArtPage = QStringLiteral("coverart");
const QString releaseNotesPage = QStringLiteral("releasenotes");

std::string storePath() {
    auto& defaults = cocoa::UserDefaults::standardUserDefaults();
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    defaults.registerDefaults({{storeKey, documents + QStringLiteral("/playlists.json")}});
    return defaults.stringForKey(storeKey).toStdString();
}

} // namespace

FenAppDelegate::FenAppDelegate() = default;

FenAppDelegate::~FenAppDelegate() {
    // The window goes after the timer.
    if (window) playerController->spectrumAnalyzerView->setOnSight(nullptr);
}

void FenAppDelegate::applicationDidFinishLaunching(bool keepsSession) {
    settings = std::make_unique<app::Settings>(cocoa::UserDefaults::standardUserDefaults());
    m_textSize = std::make_unique<app::TextSize>(*settings);
    player = std::make_unique<TulPlayer>();
    player->setExecutor([](std::function<void()> task) {
        QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(task), Qt::QueuedConnection);
    });
    player->setStorePath(storePath());
    const auto applySettings = [this] {
        player->setLoudness(settings->loudness());
        applySharingSettings();
        player->pausesWhenSinkIsRemoved = settings->pausesWhenSinkIsRemoved();
    };
    QObject::connect(settings.get(), &app::Settings::changed, settings.get(), applySettings);
    applySettings();
    if (keepsSession) m_session = std::make_unique<app::SessionKeeper>(*this);
    if (m_session) m_session->restoreVolume();
    editor = std::make_unique<app::PlaylistEditor>(*player);
    m_sources = std::make_unique<app::SourceQueue>(*player, *editor,
                                                   [this] { playlistController->reloadPlaylistData(); });
    m_deliveries = std::make_unique<app::Deliveries>(player->workers,
                                                     [this] { playlistController->updateStatusLine(); });

    m_unsavedChanges = std::make_unique<app::UnsavedChanges>(*player);
    player->playlistEdited = [this] {
        m_unsavedChanges->noteEdit();
        playlistController->updateSelector();
    };

    playerController = std::make_unique<FenPlayerController>();
    loadMainLayout();
    playlistController = std::make_unique<FenPlaylistController>();
    coverArtController = std::make_unique<FenCoverArtController>();
    releaseNotesController = std::make_unique<FenReleaseNotesController>();

    playerController->setPlayer(player.get());
    playlistController->setPlayer(player.get());
    coverArtController->setPlayer(player.get());
    playlistController->sources = m_sources.get();
    playlistController->setEditor(*editor);
    m_fileDrop = std::make_unique<app::FileDrop>(*window, *playlistController, *m_sources);

    const auto applyNotifications = [this] {
        playerController->showsNotifications = settings->showsNotifications();
    };
    QObject::connect(settings.get(), &app::Settings::changed, settings.get(), applyNotifications);
    applyNotifications();
    QObject::connect(settings.get(), &app::Settings::cannotBeStored, settings.get(), [this] {
        playlistController->showNotice(
            QStringLiteral("Settings cannot be stored: they hold until the program ends"));
    });
    playerController->initialize();
    playlistController->initialize();
    coverArtController->initialize();
    releaseNotesController->initialize();

    pageController->setArrangedObjects({playlistPage, coverArtPage, releaseNotesPage});
    m_pageDots->setPages({playlistController->displayName, coverArtController->displayName,
                          releaseNotesController->displayName});
    m_pageDots->setCurrentPage(0);
    if (m_session) m_session->restoreWindow();
    window->show();
    QWidget& page = pageController->selectedViewController()->view();
    (pageController->selectedIndex() == 0 ? *playlistController->playlistView : page).setFocus();
    // While the display server and the window manager bring the window up.
    QMetaObject::invokeMethod(
        window.get(), [this] { finishMainLayout(); }, Qt::QueuedConnection);

    m_mpris = std::make_unique<app::Mpris>(*this);
    m_sleepInhibitor = std::make_unique<app::SleepInhibitor>(player->workers);
    m_slowTimer = std::make_unique<cocoa::Timer>(slowInterval, [this] { performSlowUpdate(); });
    m_fastTimer = std::make_unique<cocoa::Timer>(fastInterval, [this] { performFastUpdate(); });
    // Its only work is the spectrum: while that is out of sight, nothing is to wake twenty times a second.
    m_fastTimer->setResting(true);
    playerController->spectrumAnalyzerView->setOnSight([this](bool seen) { m_fastTimer->setResting(!seen); });
}

void FenAppDelegate::quit() {
    QCoreApplication::exit();
}

void FenAppDelegate::finishSaving() {
    if (m_session) m_session->store();
    m_session.reset();
    if (window) window->hide();
    if (m_windowSize) m_windowSize->store();
    if (player) player->finishSaving();
}

void FenAppDelegate::shutDown() {
    if (window) window->hide();
    m_mpris.reset();
    if (player) player->shutDown();
    finishSaving();
}

void FenAppDelegate::performFastUpdate() {
    playerController->updatePlayerViewFast();
}

void FenAppDelegate::performSlowUpdate() {
    player->update();
    m_unsavedChanges->check();
    if (m_session) m_session->check();
    m_sleepInhibitor->setInhibits(settings->keepsAwake() && isStarted(player->playbackState()));
    if (player->takeSongChanged()) {
        playerController->handleSongChange();
        coverArtController->updateCoverArt();
        // A new list's entry may have the index of the one before, which leaves the table as it is drawn.
        playlistController->playlistView->viewport()->update();
    } else if (player->takeSongInfoChanged()) {
        playerController->updateSongInfo();
        coverArtController->updateCoverArt();
    }
    playerController->updatePlayerViewSlow();
    playlistController->updatePlaylistViewSlow();
    playlistController->updateStatusLine();
}

QString FenAppDelegate::identifierForObject(const QString& object) {
    return object;
}

cocoa::ViewController* FenAppDelegate::viewControllerForIdentifier(const QString& identifier) {
    if (identifier == playlistPage) return playlistController.get();
    if (identifier == coverArtPage) return coverArtController.get();
    if (identifier == releaseNotesPage) return releaseNotesController.get();
    return nullptr;
}

void FenAppDelegate::didTransitionToObject(const QString& object) {
    m_pageDots->setCurrentPage(static_cast<int>(pageController->arrangedObjects().indexOf(object)));
}

void FenAppDelegate::pageControllerDidEndLiveTransition() {
    pageController->completeTransition();
    const auto* page =
        static_cast<FenMultiFunctionalViewController*>(pageController->selectedViewController());
    pageName->setStringValue(page->displayName);
}
