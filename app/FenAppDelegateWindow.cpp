// The main window: its layout, and what its controls do.

#include "app/FenAppDelegate.h"

#include "app/FileDrop.h"
#include "app/PageDots.h"
#include "app/Skin.h"
#include "app/TextField.h"
#include "app/WindowSize.h"
#include "app/session/SessionKeeper.h"
#include "app/settings/TextSize.h"
#include "controls/CustomWindow.h"
#include "core/files/folders.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/Autoresizing.h"
#include "platform/cocoa/PageController.h"
#include "platform/cocoa/UserDefaults.h"
#include "ui_MainWindow.h"

#include <QIcon>

void FenAppDelegate::loadMainLayout() {
    app::useSkinColours();
    window = std::make_unique<CustomWindow>();
    Ui::MainWindow layout;
    layout.setupUi(window.get());
    cocoa::Autoresizing::of(*window);
    cocoa::awakeFromNib(*window);
    m_windowSize = std::make_unique<app::WindowSize>(*window, cocoa::UserDefaults::standardUserDefaults());

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
    playerController->volumeCaption = layout.volumeCaption;
    playerController->balanceCaption = layout.balanceCaption;
    connectControls(layout);
}

void FenAppDelegate::finishMainLayout() {
    window->setWindowIcon(QIcon(QStringLiteral(":/images/tulplayer.svg")));
    makeMenu();
    m_textSize->askDesktop();
    if (const auto folder = stateFolder(); !folder.empty()) player->setStateFolder(folder);
    if (m_session) m_session->restoreList(*m_sources);
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

    window->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(window.get(), &QWidget::customContextMenuRequested, window.get(),
                     [this](const QPoint& place) { showMenuAt(window->mapToGlobal(place)); });
}
