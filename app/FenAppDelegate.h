#pragma once

#include "app/Command.h"
#include "app/FenPlayerController.h"
#include "platform/cocoa/PageControllerDelegate.h"

#include <QStringList>

#include <memory>
#include <string>
#include <vector>

class CustomWindow;
class FenCoverArtController;
class FenPlaylistController;
class FenReleaseNotesController;
class QMenu;
class QPoint;
class TulPlayer;
enum class TulRepeat;

namespace Ui {
class MainWindow;
}

namespace app {
class Card;
class Deliveries;
class FileDrop;
class Mpris;
class PageDots;
class PlaylistEditor;
class SessionKeeper;
class Settings;
class SleepInhibitor;
class SourceQueue;
class TextField;
class TextSize;
class UnsavedChanges;
class WindowSize;
} // namespace app

namespace cocoa {
class PageController;
class Timer;
} // namespace cocoa

/// The root of the running program: creates the player, the window and its pages at launch, carries the
/// commands, and drives every display by two timers.
///
/// Threads: main thread only. It hands the player an executor that brings the end of a track here.
class FenAppDelegate : public cocoa::PageControllerDelegate {
public:
    FenAppDelegate();
    ~FenAppDelegate() override;
    FenAppDelegate(const FenAppDelegate&) = delete;
    FenAppDelegate& operator=(const FenAppDelegate&) = delete;

    std::unique_ptr<TulPlayer> player;
    std::unique_ptr<FenPlayerController> playerController;
    std::unique_ptr<FenPlaylistController> playlistController;
    std::unique_ptr<FenCoverArtController> coverArtController;
    std::unique_ptr<FenReleaseNotesController> releaseNotesController;
    std::unique_ptr<CustomWindow> window;
    std::unique_ptr<app::Settings> settings;
    /// What every edit of the playlist goes through.
    std::unique_ptr<app::PlaylistEditor> editor;
    /// The main layout's; owned by the window.
    cocoa::PageController* pageController = nullptr;
    app::TextField* pageName = nullptr;

    /// Once, before anything else. Shows the window; nothing plays. Of the programs that run at the same
    /// time, one keeps the session: goes on where the last one ended, and leaves that to the next.
    void applicationDidFinishLaunching(bool keepsSession = false);

    /// What the program was started with. A playlist alone is opened; of anything else the files, those in
    /// folders, and addresses are appended, and the first of them plays unless something plays already.
    /// Behind a list that is restored all is appended, and plays.
    void openSources(const std::vector<std::string>& sources);
    /// What another start of the program hands over: appended, playlists as well, and the first of it plays
    /// whatever plays now.
    void appendAndPlay(const std::vector<std::string>& sources);
    /// Plays what is restored, as soon as it is there.
    void playRestored();

    /// Ends the event loop, also from under a prompt; `main` then calls `shutDown`.
    static void quit();
    /// The last call before the process ends: silence, and nothing left behind. Waits for threads of the
    /// audio library for a fifth of a second at most.
    void shutDown();
    /// Hides the window, stores what is not saved, and waits until all is on the disk, two seconds at most.
    void finishSaving();

    void openDocument();
    void addFolder();
    void openPlaylist();
    void savePlaylist();
    void clearPlaylist();
    /// Discards the changes since the list was saved.
    void revertPlaylist();
    void openStream();
    void toggleSpectrumAnalyzer();
    /// Lets other machines hear what plays, until asked again. The status line and the menu show where.
    void toggleNetworkSharing();

    /// False while a command could change what is being worked on: a prompt that has just opened takes
    /// commands before the window manager gives it the keyboard, and so does a knob that is held.
    static bool takesCommands();

    void performFastUpdate();
    void performSlowUpdate();

    QString identifierForObject(const QString& object) override;
    cocoa::ViewController* viewControllerForIdentifier(const QString& identifier) override;
    void didTransitionToObject(const QString& object) override;
    void pageControllerDidEndLiveTransition() override;

private:
    void loadMainLayout();
    void connectControls(Ui::MainWindow& layout);
    void finishMainLayout(); ///< What the window does not show.
    app::Commands fileCommands();
    app::Commands playlistCommands();
    app::Commands playbackCommands();
    app::Commands viewCommands();
    app::Commands programCommands();
    void makeMenu();
    QMenu& menuOf(const app::Command& command);
    void addToMenu(const app::Command& command);
    void toggleRepeat(TulRepeat repeat);
    void toggleKeyList();
    void toggleSettings();
    void showMenuAt(const QPoint& place);
    void applySharingSettings();
    app::PageDots* m_pageDots = nullptr;
    std::unique_ptr<app::SourceQueue> m_sources;
    std::unique_ptr<app::Deliveries> m_deliveries;
    std::unique_ptr<app::UnsavedChanges> m_unsavedChanges;
    std::unique_ptr<app::FileDrop> m_fileDrop;
    std::unique_ptr<app::Mpris> m_mpris;
    std::unique_ptr<app::TextSize> m_textSize;
    std::unique_ptr<app::WindowSize> m_windowSize;
    std::unique_ptr<app::SleepInhibitor> m_sleepInhibitor;
    std::unique_ptr<app::SessionKeeper> m_session; ///< Null when another program keeps it.
    app::Commands m_commands;
    std::unique_ptr<QMenu> m_menu;
    std::unique_ptr<app::Card> m_keyList;      ///< Null until it is first shown.
    std::unique_ptr<app::Card> m_settingsCard; ///< The same.
    std::unique_ptr<cocoa::Timer> m_slowTimer;
    std::unique_ptr<cocoa::Timer> m_fastTimer;
};
