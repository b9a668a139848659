// The commands, and the menu and the keys that are made of them.

#include "app/FenAppDelegate.h"

#include "app/Card.h"
#include "app/FenPlaylistController.h"
#include "app/KeyList.h"
#include "app/SharingText.h"
#include "app/Skin.h"
#include "app/WindowSize.h"
#include "app/editing/PlaylistEditor.h"
#include "app/settings/SettingsPanel.h"
#include "app/settings/TextSize.h"
#include "controls/CustomWindow.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/PageController.h"
#include "platform/cocoa/RunLoop.h"
#include "platform/cocoa/TableView.h"

#include <QApplication>
#include <QMenu>

#include <algorithm>
#include <utility>

namespace {

constexpr double shortJump = 5.0;
constexpr double longJump = 30.0;
constexpr double volumeStep = 0.05;

const QString playlistMenu = QStringLiteral("Playlist");
const QString playbackMenu = QStringLiteral("Playback");
const QString viewMenu = QStringLiteral("View");
const QString sortMenu = QStringLiteral("Playlist/Sort");

/// The commands that name no submenu of their own go into this one.
app::Commands in(const QString& submenu, app::Commands commands) {
    for (app::Command& command : commands)
        if (command.submenu.isEmpty()) command.submenu = submenu;
    return commands;
}

} // namespace

bool FenAppDelegate::takesCommands() {
    return cocoa::RunLoop::isInDefaultMode() && QApplication::activeModalWidget() == nullptr;
}

app::Commands FenAppDelegate::fileCommands() {
    return {
        {.title = QStringLiteral("Add Files…"),
         .key = QKeySequence::Open,
         .action = [this] { openDocument(); }},
        {.title = QStringLiteral("Add Folder…"),
         .key = Qt::CTRL | Qt::SHIFT | Qt::Key_O,
         .action = [this] { addFolder(); }},
        {.title = QStringLiteral("Add Stream…"),
         .key = Qt::CTRL | Qt::Key_U,
         .action = [this] { openStream(); }},
        {},
        {.title = QStringLiteral("Open Playlist…"),
         .key = Qt::CTRL | Qt::Key_L,
         .action = [this] { openPlaylist(); }},
        {.title = QStringLiteral("Save Playlist…"),
         .key = QKeySequence::Save,
         .action = [this] { savePlaylist(); }},
        {},
        {.item = &editor->undoAction()},
        {.item = &editor->redoAction()},
        {},
        {.title = QStringLiteral("Find…"),
         .key = QKeySequence::Find,
         .action =
             [this] {
                 pageController->turnToPage(0);
                 playlistController->openSearch();
             }},
        {},
    };
}

app::Commands FenAppDelegate::playlistCommands() {
    const auto order = [](const QString& title, std::function<void()> action) {
        return app::Command{.title = title, .action = std::move(action), .submenu = sortMenu};
    };
    const auto sort = [this, order](const QString& title, app::SortKey key) {
        return order(title, [this, key] { editor->sort(key); });
    };
    app::Commands commands{
        {.title = QStringLiteral("Clear Playlist"),
         .key = QKeySequence::New,
         .action = [this] { clearPlaylist(); }},
        {.title = QStringLiteral("Revert to Saved"),
         .action = [this] { revertPlaylist(); },
         .isEnabled = [this] { return !player->playlist->path.empty() && player->playlist->isChanged(); }},
        {},
    };
    for (QAction* const item : playlistController->playlistView->actions()) {
        const bool removes = item->shortcut() == Qt::Key_Delete;
        commands.push_back(
            {.place = removes ? app::Command::Place::menu : app::Command::Place::keyOnly, .item = item});
    }
    for (auto&& command : {sort(QStringLiteral("By Title"), app::SortKey::title),
                           sort(QStringLiteral("By Artist and Album"), app::SortKey::artistAndAlbum),
                           sort(QStringLiteral("By File Name"), app::SortKey::fileName),
                           order(QStringLiteral("Reverse"), [this] { editor->reverse(); }),
                           order(QStringLiteral("Randomise"), [this] { editor->randomise(); })})
        commands.push_back(command);
    commands.emplace_back();
    commands.push_back(
        {.title = QStringLiteral("Go to Playing Track"), .key = Qt::CTRL | Qt::Key_J, .action = [this] {
             pageController->turnToPage(0);
             playlistController->showCurrentRow();
         }});
    return commands;
}

app::Commands FenAppDelegate::playbackCommands() {
    FenPlayerController* const controls = playerController.get();
    const auto held = [](const QString& title, QKeyCombination key, std::function<void()> action) {
        return app::Command{.title = title,
                            .key = key,
                            .action = std::move(action),
                            .place = app::Command::Place::keyOnly,
                            .repeats = true};
    };
    return {
        {.title = QStringLiteral("Play or Pause"),
         .key = Qt::Key_Space,
         .action = [=] { controls->playPause(); },
         .titleNow =
             [this] {
                 return isStarted(player->playbackState()) ? QStringLiteral("Pause") : QStringLiteral("Play");
             }},
        {.title = QStringLiteral("Next"),
         .key = Qt::CTRL | Qt::Key_Right,
         .action = [=] { controls->next(); }},
        {.title = QStringLiteral("Previous"),
         .key = Qt::CTRL | Qt::Key_Left,
         .action = [=] { controls->previous(); }},
        held(QStringLiteral("Forward 5 Seconds"), Qt::SHIFT | Qt::Key_Right,
             [=] { controls->seekBy(shortJump); }),
        held(QStringLiteral("Back 5 Seconds"), Qt::SHIFT | Qt::Key_Left,
             [=] { controls->seekBy(-shortJump); }),
        held(QStringLiteral("Forward 30 Seconds"), Qt::CTRL | Qt::SHIFT | Qt::Key_Right,
             [=] { controls->seekBy(longJump); }),
        held(QStringLiteral("Back 30 Seconds"), Qt::CTRL | Qt::SHIFT | Qt::Key_Left,
             [=] { controls->seekBy(-longJump); }),
        {.title = QStringLiteral("Stop After This Track"),
         .key = Qt::CTRL | Qt::Key_T,
         .action = [this] { player->setStopsAfterEntry(!player->stopsAfterEntry()); },
         .isOn = [this] { return player->stopsAfterEntry(); }},
        {},
        {.title = QStringLiteral("Repeat Track"),
         .key = Qt::CTRL | Qt::Key_R,
         .action = [this] { toggleRepeat(TulRepeat::track); },
         .isOn = [this] { return player->repeat() == TulRepeat::track; }},
        {.title = QStringLiteral("Repeat List"),
         .action = [this] { toggleRepeat(TulRepeat::list); },
         .isOn = [this] { return player->repeat() == TulRepeat::list; }},
        {.title = QStringLiteral("Shuffle"),
         .key = Qt::CTRL | Qt::Key_H,
         .action = [this] { player->setShuffled(!player->isShuffled()); },
         .isOn = [this] { return player->isShuffled(); }},
        {},
        held(QStringLiteral("Louder"), Qt::CTRL | Qt::Key_Up, [=] { controls->changeVolume(volumeStep); }),
        held(QStringLiteral("Quieter"), Qt::CTRL | Qt::Key_Down,
             [=] { controls->changeVolume(-volumeStep); }),
        {.title = QStringLiteral("Mute"),
         .key = Qt::CTRL | Qt::Key_0,
         .action = [=] { controls->toggleMute(); },
         .isOn = [=] { return controls->isMuted(); }},
    };
}

app::Commands FenAppDelegate::viewCommands() {
    FenPlayerController* const controls = playerController.get();
    const auto page = [this](const QString& title, QKeyCombination key, int index) {
        return app::Command{
            .title = title, .key = key, .action = [this, index] { pageController->turnToPage(index); }};
    };
    const auto textSize = [this](const QString& title, QKeySequence::StandardKey key, int steps) {
        return app::Command{
            .title = title, .key = key, .action = [this, steps] { m_textSize->changeBySteps(steps); }};
    };
    const auto resizing = [this](const QString& title, QKeyCombination key, int rows) {
        return app::Command{.title = title,
                            .key = key,
                            .action = [this, rows] { m_windowSize->growByRows(rows); },
                            .repeats = true};
    };
    return {
        page(QStringLiteral("Playlist"), Qt::CTRL | Qt::Key_1, 0),
        page(QStringLiteral("Cover Art"), Qt::CTRL | Qt::Key_2, 1),
        page(QStringLiteral("Release Notes"), Qt::CTRL | Qt::Key_3, 2),
        {},
        {.title = QStringLiteral("Remaining Time"),
         .action = [=] { controls->toggleRemainingTime(); },
         .isOn = [=] { return controls->showsRemainingTime(); }},
        {.title = QStringLiteral("Spectrum"),
         .key = Qt::CTRL | Qt::Key_E,
         .action = [this] { toggleSpectrumAnalyzer(); },
         .isOn = [=] { return controls->renderSpectrumAnalyzer; }},
        {},
        textSize(QStringLiteral("Larger Text"), QKeySequence::ZoomIn, 1),
        textSize(QStringLiteral("Smaller Text"), QKeySequence::ZoomOut, -1),
        resizing(QStringLiteral("Taller Window"), Qt::CTRL | Qt::SHIFT | Qt::Key_Down, 1),
        resizing(QStringLiteral("Shorter Window"), Qt::CTRL | Qt::SHIFT | Qt::Key_Up, -1),
        {.title = QStringLiteral("Minimise"),
         .key = Qt::CTRL | Qt::Key_M,
         .action = [this] { window->showMinimized(); }},
    };
}

app::Commands FenAppDelegate::programCommands() {
    return {
        {},
        {.title = QStringLiteral("Share on the Network"),
         .action = [this] { toggleNetworkSharing(); },
         .isOn = [this] { return player->networkSharingEnabled; },
         .titleNow = [this] { return app::sharingTitle(*player); }},
        {.title = QStringLiteral("Settings…"),
         .key = Qt::CTRL | Qt::Key_Comma,
         .action = [this] { toggleSettings(); }},
        {.title = QStringLiteral("Keyboard Shortcuts"),
         .key = Qt::Key_F1,
         .action = [this] { toggleKeyList(); }},
        {},
        {.title = QStringLiteral("Quit"), .key = Qt::CTRL | Qt::Key_Q, .action = [] { quit(); }},
    };
}

void FenAppDelegate::makeMenu() {
    for (auto&& group :
         {fileCommands(), in(playlistMenu, playlistCommands()), in(playbackMenu, playbackCommands()),
          in(viewMenu, viewCommands()), programCommands()})
        m_commands.insert(m_commands.end(), group.begin(), group.end());
    m_menu = std::make_unique<QMenu>();
    app::dressInSkin(*m_menu);
    for (const app::Command& command : m_commands)
        command.isSeparator() ? static_cast<void>(menuOf(command).addSeparator()) : addToMenu(command);
}

QMenu& FenAppDelegate::menuOf(const app::Command& command) {
    QMenu* menu = m_menu.get();
    for (const QString& title : command.submenu.split(u'/', Qt::SkipEmptyParts)) {
        const auto items = menu->actions();
        const auto known = std::find_if(items.begin(), items.end(), [&](const QAction* item) {
            return item->menu() && item->text() == title;
        });
        QMenu* const inner = known == items.end() ? menu->addMenu(title) : (*known)->menu();
        if (known == items.end()) app::dressInSkin(*inner);
        menu = inner;
    }
    return *menu;
}

void FenAppDelegate::addToMenu(const app::Command& command) {
    if (command.item) {
        if (command.place == app::Command::Place::menu) menuOf(command).addAction(command.item);
        if (command.item->shortcutContext() == Qt::WindowShortcut) window->addAction(command.item);
        return;
    }
    QAction* const item = std::make_unique<QAction>(command.title, m_menu.get()).release();
    item->setAutoRepeat(command.repeats);
    item->setCheckable(command.isOn != nullptr);
    if (command.key) item->setShortcut(*command.key);
    QObject::connect(item, &QAction::triggered, window.get(), [action = command.action] {
        if (takesCommands()) action();
    });
    QObject::connect(m_menu.get(), &QMenu::aboutToShow, item, [item, command] {
        if (command.titleNow) item->setText(command.titleNow());
        if (command.isOn) item->setChecked(command.isOn());
        if (command.isEnabled) item->setEnabled(command.isEnabled());
    });
    if (command.place == app::Command::Place::menu) menuOf(command).addAction(item);
    window->addAction(item); // the keys work while the menu is closed, too
}

void FenAppDelegate::showMenuAt(const QPoint& place) {
    m_menu->popup(place);
}

void FenAppDelegate::toggleRepeat(TulRepeat repeat) {
    player->setRepeat(player->repeat() == repeat ? TulRepeat::off : repeat);
}

void FenAppDelegate::toggleKeyList() {
    if (!m_keyList)
        m_keyList = std::make_unique<app::Card>(QStringLiteral("Keyboard Shortcuts"),
                                                app::makeKeyList(m_commands), *pageController);
    m_keyList->isVisible() ? m_keyList->hide() : m_keyList->open();
}

void FenAppDelegate::toggleSettings() {
    if (!m_settingsCard) {
        app::SettingsPanel::Sharing sharing{.isOn = [this] { return player->networkSharingEnabled; },
                                            .toggle = [this] { toggleNetworkSharing(); },
                                            .text = [this] { return app::sharingTitle(*player); }};
        m_settingsCard = std::make_unique<app::Card>(
            QStringLiteral("Settings"), std::make_unique<app::SettingsPanel>(*settings, std::move(sharing)),
            *pageController);
    }
    m_settingsCard->isVisible() ? m_settingsCard->hide() : m_settingsCard->open();
}
