// The main window: its layout, what its controls do, and the menu.

#include "app/FenAppDelegate.h"

#include "app/DisplayText.h"
#include "app/FileDrop.h"
#include "app/PageDots.h"
#include "app/Skin.h"
#include "app/TextField.h"
#include "app/editing/EditMenu.h"
#include "app/editing/PlaylistEditor.h"
#include "controls/CustomWindow.h"
#include "core/files/folders.h"
#include "core/player/TulNetworkSharing.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/PageController.h"
#include "platform/cocoa/RunLoop.h"
#include "ui_MainWindow.h"

#include <QApplication>
#include <QIcon>
#include <QMenu>
#include <QSysInfo>

namespace {

/// What the platform itself draws in the window: the selector's box, scroll bars, the notes.
QPalette skinPalette() {
    QPalette palette(QColor(0x29, 0x36, 0x44), QColor(0x22, 0x22, 0x22));
    palette.setColor(QPalette::Base, QColor(0x15, 0x17, 0x1a));
    palette.setColor(QPalette::Text, QColor(0xd7, 0xe3, 0xf2));
    palette.setColor(QPalette::WindowText, QColor(0xb9, 0xc6, 0xd6));
    palette.setColor(QPalette::ButtonText, QColor(0xd7, 0xe3, 0xf2));
    palette.setColor(QPalette::Highlight, QColor(0x4a, 0x90, 0xe2));
    palette.setColor(QPalette::HighlightedText, QColor(0xff, 0xff, 0xff));
    palette.setColor(QPalette::PlaceholderText, QColor(0x7d, 0x88, 0x96));
    return palette;
}

} // namespace

void FenAppDelegate::loadMainLayout() {
    window = std::make_unique<CustomWindow>();
    window->setPalette(skinPalette());
    Ui::MainWindow layout;
    layout.setupUi(window.get());
    cocoa::awakeFromNib(*window);

    pageName = layout.pageName;
    m_pageDots = layout.pageDots;
    pageController = layout.pageController;
    pageController->setDelegate(this);
    m_pageDots->setAction([this](int page) { pageController->turnToPage(page); });

    playerController->timeView = layout.timeView;
    playerController->info1View = layout.info1View;
    playerController->info2View = layout.info2View;
    playerController->lengthView = layout.lengthView;
    playerController->statusSlider = layout.statusSlider;
    playerController->volumeSlider = layout.volumeSlider;
    playerController->playPauseButton = layout.playPauseButton;
    playerController->spectrumAnalyzerView = layout.spectrumAnalyzerView;
    playerController->controlsBackground = layout.controlsBackground;
    playerController->balanceSlider = layout.balanceSlider;
    connectControls(layout);
}

void FenAppDelegate::finishMainLayout() {
    window->setWindowIcon(QIcon(QStringLiteral(":/images/tulplayer.svg")));
    makeMenu();
    if (const auto folder = stateFolder(); !folder.empty()) player->setStateFolder(folder);
}

void FenAppDelegate::connectControls(Ui::MainWindow& layout) {
    FenPlayerController* controls = playerController.get();
    const auto clicked = [](app::ImageButton* button, auto action) {
        QObject::connect(button, &QAbstractButton::clicked, button, action);
    };
    clicked(layout.playPauseButton, [controls] { controls->playPause(); });
    clicked(layout.nextButton, [controls] { controls->next(); });
    clicked(layout.previousButton, [controls] { controls->previous(); });
    clicked(layout.closeButton, [this] { window->close(); });
    clicked(layout.minimiseButton, [this] { window->showMinimized(); });
    clicked(layout.menuButton, [this, button = layout.menuButton] {
        showMenuAt(button->mapToGlobal(QPoint(0, button->height())));
    });

    layout.statusSlider->setAction([controls] { controls->statusSliderChange(); });
    layout.volumeSlider->setAction([controls] { controls->volumeSliderChange(); });
    layout.balanceSlider->setAction([controls] { controls->balanceSliderChange(); });
    layout.statusSlider->setValueText([](double seconds) { return app::timeText(seconds); });
    layout.volumeSlider->setValueText(
        [](double gain) { return QStringLiteral("%1 %").arg(qRound(gain * 100)); });

    window->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(window.get(), &QWidget::customContextMenuRequested, window.get(),
                     [this](const QPoint& place) { showMenuAt(window->mapToGlobal(place)); });
}

bool FenAppDelegate::takesCommands() {
    return cocoa::RunLoop::isInDefaultMode() && QApplication::activeModalWidget() == nullptr;
}

void FenAppDelegate::makeMenu() {
    m_menu = std::make_unique<QMenu>();
    app::dressInSkin(*m_menu);
    const app::AddCommand addCommand = [this](QMenu& menu, const QString& title, const QKeySequence& keys,
                                              std::function<void()> action) {
        QAction* item = menu.addAction(title);
        item->setShortcut(keys);
        item->setAutoRepeat(false); // one press, one command, however long it is held
        QObject::connect(item, &QAction::triggered, window.get(), [action = std::move(action)] {
            if (takesCommands()) action();
        });
        // The keys work while the menu is closed, too.
        window->addAction(item);
        return item;
    };
    const auto command = [this, &addCommand](const QString& title, const QKeySequence& keys,
                                             std::function<void()> action) {
        return addCommand(*m_menu, title, keys, std::move(action));
    };
    command(QStringLiteral("Add Files…"), QKeySequence::Open, [this] { openDocument(); });
    command(QStringLiteral("Add Folder…"), Qt::CTRL | Qt::SHIFT | Qt::Key_O, [this] { addFolder(); });
    command(QStringLiteral("Add Stream…"), Qt::CTRL | Qt::Key_U, [this] { openStream(); });
    m_menu->addSeparator();
    command(QStringLiteral("Open Playlist…"), Qt::CTRL | Qt::Key_L, [this] { openPlaylist(); });
    command(QStringLiteral("Save Playlist…"), QKeySequence::Save, [this] { savePlaylist(); });
    m_revert = command(QStringLiteral("Revert to Saved"), {}, [this] { revertPlaylist(); });
    command(QStringLiteral("Clear Playlist"), QKeySequence::New, [this] { clearPlaylist(); });
    m_menu->addSeparator();
    app::addEditCommands(*m_menu, *window, *editor, addCommand);
    m_menu->addSeparator();
    command(QStringLiteral("Play or Pause"), Qt::Key_Space, [this] { playerController->playPause(); });
    command(QStringLiteral("Next"), Qt::CTRL | Qt::Key_Right, [this] { playerController->next(); });
    command(QStringLiteral("Previous"), Qt::CTRL | Qt::Key_Left, [this] { playerController->previous(); });
    command(QStringLiteral("Spectrum On or Off"), Qt::CTRL | Qt::Key_E, [this] { toggleSpectrumAnalyzer(); });
    m_menu->addSeparator();
    m_sharing = command(QString(), {}, [this] { toggleNetworkSharing(); });
    m_sharing->setCheckable(true);
    m_menu->addSeparator();
    command(QStringLiteral("Playlist"), Qt::CTRL | Qt::Key_1, [this] { pageController->turnToPage(0); });
    command(QStringLiteral("Cover Art"), Qt::CTRL | Qt::Key_2, [this] { pageController->turnToPage(1); });
    command(QStringLiteral("Release Notes"), Qt::CTRL | Qt::Key_3, [this] { pageController->turnToPage(2); });
    m_menu->addSeparator();
    command(QStringLiteral("Minimise"), Qt::CTRL | Qt::Key_M, [this] { window->showMinimized(); });
    command(QStringLiteral("Quit"), Qt::CTRL | Qt::Key_Q, [] { quit(); });
}

void FenAppDelegate::showMenuAt(const QPoint& place) {
    m_revert->setEnabled(!player->playlist->path.empty() && player->playlist->isChanged());
    m_sharing->setText(sharingTitle());
    m_sharing->setChecked(player->networkSharingEnabled);
    m_menu->popup(place);
}

QString FenAppDelegate::sharingTitle() const {
    if (const std::uint32_t port = player->networkSharing->port; port != 0)
        return QStringLiteral("Shared at http://%1:%2/").arg(QSysInfo::machineHostName()).arg(port);
    const bool failed = player->networkSharingEnabled && player->stream;
    return failed ? QStringLiteral("Sharing Is Not Possible Now") : QStringLiteral("Share on the Network");
}
