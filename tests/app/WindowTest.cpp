// The window with real media, the audio library without a device in real time, and input events.

#include "app/Card.h"
#include "app/CoverArtView.h"
#include "app/FenAppDelegate.h"
#include "app/FenCoverArtController.h"
#include "app/FenPlaylistController.h"
#include "app/ImageButton.h"
#include "app/SharingText.h"
#include "app/StatusLine.h"
#include "app/TextField.h"
#include "app/search/SearchField.h"
#include "app/settings/Settings.h"
#include "controls/CustomWindow.h"
#include "controls/FenSpectrumAnalyzerView.h"
#include "controls/PlaylistEntryCell.h"
#include "controls/RixSlider.h"
#include "core/player/TulNetworkSharing.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/ComboBox.h"
#include "platform/cocoa/PageController.h"
#include "platform/cocoa/TableView.h"
#include "platform/cocoa/UserDefaults.h"
#include "tests/bass/Listener.h"
#include "tests/support/HttpServer.h"
#include "tests/support/Media.h"
#include "tests/support/TestApplication.h"

#include <QDropEvent>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QUrl>

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace {

using support::runUntil;

std::string makeTrack(const std::string& title, double hertz, double seconds) {
    return support::encode(std::to_string(static_cast<int>(hertz)) + ".flac",
                           support::sine(hertz, static_cast<std::size_t>(seconds * 44100)), 44100, 2,
                           {"flac", "-s", "-f", "-T", "TITLE=" + title, "-T", "ARTIST=Band", "-T",
                            "ALBUM=Record", "-o", "OUT", "IN"});
}

/// Counts how often what it filters is drawn.
class Paintings : public QObject {
public:
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

class WindowTest : public testing::Test {
protected:
    WindowTest() {
        setenv("TUL_AUDIO", "null", 1);
        setenv("HOME", support::scratch().c_str(), 1);
        setenv("XDG_CONFIG_HOME", (support::scratch() / "config").c_str(), 1);
        unsetenv("XDG_STATE_HOME");
        std::filesystem::create_directories(support::scratch() / "Documents");
        support::offscreenApplication();
        delegate.applicationDidFinishLaunching();
        controls = delegate.playerController.get();
    }

    cocoa::TableView& table() { return *delegate.playlistController->playlistView; }
    cocoa::ComboBox& selector() { return *delegate.playlistController->playlistSelector; }
    void doubleClickRow(int row) {
        const QPoint place = table().rectOfRow(row).center().toPoint();
        QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(table().viewport(), Qt::LeftButton, {}, place);
    }
    void addTracks() {
        for (const auto& [title, hertz] : {std::pair{"One", 440.0}, {"Two", 880.0}, {"Three", 1320.0}})
            delegate.player->playlist->addEntry(makeTrack(title, hertz, 20));
        delegate.playlistController->reloadPlaylistData();
    }
    bool shows(const char* title) {
        return runUntil([&] { return controls->info1View->text() == QString::fromUtf8(title); });
    }
    void click(QWidget* button) { QTest::mouseClick(button, Qt::LeftButton); }

    FenAppDelegate delegate;
    FenPlayerController* controls = nullptr;
};

TEST_F(WindowTest, StartsSilentWithAnIdleLook) {
    EXPECT_TRUE(delegate.window->isVisible());
    EXPECT_FALSE(delegate.player->isPlaying());
    EXPECT_FALSE(controls->timeView->isVisible() || controls->lengthView->isVisible());
    EXPECT_FALSE(controls->spectrumAnalyzerView->isVisible());
    QTest::mouseClick(controls->statusSlider, Qt::LeftButton);
    EXPECT_EQ(delegate.player->stream, nullptr);
}

TEST_F(WindowTest, SharingSaysWhereOthersListenAndFollowsItsSettings) {
    addTracks();
    doubleClickRow(0);
    ASSERT_TRUE(runUntil([&] { return delegate.player->isPlaying(); }));
    const app::StatusLine& line = *delegate.playlistController->statusLine;
    const auto says = [&](const QString& text) { return line.isVisible() && line.text().contains(text); };
    const auto& sharing = *delegate.player->networkSharing;
    const auto stall = [](auto& client) { client.stall(); };
    const support::HttpServer other{stall};

    delegate.settings->setSharingPort(other.port());
    delegate.toggleNetworkSharing();
    EXPECT_TRUE(says(QStringLiteral("Port %1 Is Taken").arg(other.port()))) << line.text().toStdString();
    const int port = support::HttpServer(stall).port(); // free again
    delegate.settings->setSharingPort(port);
    EXPECT_EQ(sharing.port, static_cast<std::uint32_t>(port));
    EXPECT_TRUE(says(QStringLiteral("Others can listen at http://"))) << line.text().toStdString();
    EXPECT_TRUE(says(QStringLiteral(":%1/").arg(port)));

    const Listener listener(port);
    EXPECT_TRUE(runUntil([&] { return sharing.listenerCount() == 1; }));
    EXPECT_TRUE(app::sharingTitle(*delegate.player).endsWith(QStringLiteral(":%1/ (1 listening)").arg(port)));
    delegate.settings->setSharingName(QStringLiteral("Kitchen"));
    EXPECT_EQ(sharing.name, "Kitchen");
    EXPECT_EQ(sharing.listenerCount(), 1U) << "a new name disconnects no listener";
    delegate.toggleNetworkSharing();
    EXPECT_EQ(app::sharingTitle(*delegate.player), "Share on the Network");
}

TEST_F(WindowTest, ADoubleClickPlaysAndTheControlsFollow) {
    addTracks();
    doubleClickRow(1);
    ASSERT_TRUE(shows("Two"));
    EXPECT_EQ(controls->info2View->text(), "Band");
    EXPECT_TRUE(runUntil([&] { return controls->lengthView->text() == "00:20"; }));
    EXPECT_TRUE(controls->playPauseButton->image().isNull()) << "the background carries the pause mark";
    EXPECT_TRUE(runUntil([&] { return controls->statusSlider->doubleValue() > 0.2; }));
    click(controls->playPauseButton);
    EXPECT_FALSE(controls->timeView->isVisible()) << "while the fade is still played";
    EXPECT_FALSE(controls->playPauseButton->image().isNull());
    QTest::keyClick(delegate.window.get(), Qt::Key_Space);
    EXPECT_TRUE(isStarted(delegate.player->playbackState()));
    controls->volumeSlider->moveTo(0.25);
    controls->balanceSlider->moveTo(-1.0);
    EXPECT_EQ(delegate.player->stream->volume(), 0.25F);
    EXPECT_EQ(delegate.player->balance, -1.0F);
}

TEST_F(WindowTest, TheListTakesTheHeightThatTheWindowIsGivenAndItIsThereAgain) {
    const QWidget& window = *delegate.window;
    const int free = window.screen()->availableGeometry().height();
    ASSERT_GT(free, 700);
    ASSERT_TRUE(runUntil([&] { return !window.actions().empty(); }));
    const auto press = [&](Qt::Key key, int times) {
        for (int i = 0; i < times; ++i)
            QTest::keyClick(delegate.window.get(), key, Qt::ControlModifier | Qt::ShiftModifier);
    };
    const auto distance = [&](const QWidget& part) {
        return window.height() - part.mapTo(&window, part.rect().bottomLeft()).y();
    };
    const int selectorDistance = distance(selector());
    const struct {
        Qt::Key key;
        int times;
        int height;
    } steps[] = {
        {Qt::Key_Down, 1, 655}, {Qt::Key_Down, 9, free}, {Qt::Key_Up, 99, 328}, {Qt::Key_Down, 2, 438}};
    for (const auto& [key, times, height] : steps) {
        press(key, times);
        EXPECT_EQ(window.size(), QSize(380, height));
        EXPECT_EQ(table().height(), height - 218);
        EXPECT_EQ(distance(selector()), selectorDistance);
        EXPECT_LE(window.geometry().bottom(), window.screen()->availableGeometry().bottom());
    }
    delegate.finishSaving();
    cocoa::UserDefaults stored(
        QString::fromStdString((support::scratch() / "config/tulplayer/settings.json").string()));
    EXPECT_EQ(stored.integerForKey("WindowHeight"), 438);
    FenAppDelegate again;
    again.applicationDidFinishLaunching();
    EXPECT_EQ(again.window->height(), 438);
    cocoa::UserDefaults::standardUserDefaults().setObject(600, "WindowHeight"); // for the other cases
}

TEST_F(WindowTest, TypingInTheListFindsRowsAndArrowsAndEnterPlayThem) {
    addTracks();
    auto& field = *delegate.playlistController->searchField;
    QLineEdit& line = field.line();
    const auto& list = delegate.player->playlist;
    const auto shown = [&] {
        std::string titles;
        for (int row = table().rowAfter(-1); row < table().numberOfRows(); row = table().rowAfter(row))
            titles += list->entryAt(row)->title + " ";
        return titles;
    };
    ASSERT_TRUE(runUntil([&] { return table().hasFocus(); }));
    QTest::keyClick(&table(), Qt::Key_T);
    EXPECT_TRUE(line.hasFocus());
    QTest::keyClicks(&line, " BÁND");
    EXPECT_EQ(line.text(), "t BÁND");
    EXPECT_EQ(table().y(), field.height()) << "it covers no row";
    EXPECT_EQ(shown(), "Two Three ");
    EXPECT_EQ(field.result(), "2 of 3");
    QTest::keyClick(&line, Qt::Key_Down);
    QTest::keyClick(&line, Qt::Key_Return);
    ASSERT_TRUE(shows("Three"));
    QTest::keyClick(&line, Qt::Key_Space);
    EXPECT_TRUE(isStarted(delegate.player->playbackState())) << "it is typed, and pauses nothing";

    cocoa::Pasteboard dragged;
    dragged.setString("2", "tuq.playlistindex");
    delegate.playlistController->acceptDrop(dragged, 1, cocoa::DropOperation::on);
    EXPECT_EQ(shown(), "Three Two ");
    EXPECT_EQ(table().selectedRowIndexes(), cocoa::IndexSet{1});
    line.selectAll();
    QTest::keyClicks(&line, "ete");
    EXPECT_EQ(field.result(), "0 of 3");
    QTest::keyClick(&line, Qt::Key_Return);
    auto late = std::make_unique<TulPlaylistEntry>();
    late->source = makeTrack("Été", 990, 20);
    std::vector<std::unique_ptr<TulPlaylistEntry>> entries;
    entries.push_back(std::move(late));
    delegate.player->insertEntries({3}, std::move(entries));
    delegate.playlistController->reloadPlaylistData();
    ASSERT_TRUE(runUntil([&] { return field.result() == "1 of 4"; })) << "when its tags are read";
    EXPECT_EQ(shown(), "Été ");
    QTest::keyClick(&line, Qt::Key_Escape);
    EXPECT_FALSE(field.isVisible());
    EXPECT_TRUE(table().hasFocus());
    EXPECT_EQ(shown(), "One Three Two Été ");
    EXPECT_EQ(table().selectedRowIndexes(), cocoa::IndexSet{3});

    QTest::keyClick(delegate.window.get(), Qt::Key_2, Qt::ControlModifier);
    QTest::keyClick(delegate.window.get(), Qt::Key_F, Qt::ControlModifier);
    ASSERT_TRUE(line.hasFocus()) << "from another page";
    QTest::keyClicks(&line, "zzz");
    EXPECT_EQ(table().selectedRowIndexes(), cocoa::IndexSet());
    QTest::keyClick(&line, Qt::Key_Escape);
    EXPECT_EQ(table().selectedRowIndexes(), cocoa::IndexSet{3}) << "the row of before";
    QTest::keyClick(&table(), Qt::Key_O);
    delegate.clearPlaylist();
    EXPECT_FALSE(field.isVisible()) << "it was of that list";
    EXPECT_TRUE(table().accessibleDescription().contains("Ctrl+O"));
}

TEST_F(WindowTest, TheListFollowsWhatPlaysOnlyWhileThatIsInView) {
    constexpr int rows = 40;
    std::string lines =
        R"({"name": "Long", "start": 25, "entries": [{"source": "/nowhere.flac", "artist": "Me"})";
    const std::string track = makeTrack("Long", 500, 20);
    for (int row = 1; row < rows; ++row)
        lines += R"(,{"source": ")" + track + "\"}";
    support::writeFile(support::scratch() / "long.tuq", lines + "]}");
    delegate.openSources({(support::scratch() / "long.tuq").string()});
    const auto inView = [&](int row) {
        const QRectF rect = table().rectOfRow(row);
        return !rect.isEmpty() && QRectF(table().viewport()->rect()).contains(rect);
    };
    ASSERT_TRUE(runUntil([&] { return table().numberOfRows() == rows; }));
    ASSERT_TRUE(runUntil([&] { return delegate.playlistController->lastPlaylistEntry == 25; }));
    // The status line takes the table's last row for a while.
    EXPECT_TRUE(runUntil([&] { return inView(25); })) << "the current row of a list that is opened";
    EXPECT_EQ(static_cast<PlaylistEntryCell&>(table().preparedCell(0)).info2(), "Me");
    const auto turnTo = [&](int row) {
        delegate.player->playlist->selectEntry(row);
        delegate.player->startCurrentEntry();
        return runUntil([&] { return delegate.playlistController->lastPlaylistEntry == row; });
    };
    ASSERT_TRUE(turnTo(35));
    EXPECT_TRUE(runUntil([&] { return inView(35); })) << "as what played before was in view";
    table().scrollRowToVisible(0);
    ASSERT_TRUE(turnTo(30));
    EXPECT_TRUE(inView(0));
    delegate.player->playlist->moveEntries(30, 20);
    ASSERT_TRUE(runUntil([&] { return delegate.playlistController->lastPlaylistEntry == 20; }));
    EXPECT_TRUE(inView(0)) << "it was moved, nothing else began";
    QTest::keyClick(&table(), Qt::Key_N);
    QTest::keyClicks(&delegate.playlistController->searchField->line(), "owhere");
    EXPECT_FALSE(inView(20));
    QTest::keyClick(delegate.window.get(), Qt::Key_J, Qt::ControlModifier);
    EXPECT_TRUE(inView(20)) << "past the search";
}

TEST_F(WindowTest, TheNextEntryStartsByItselfAndAnEmptiedListEndsRewound) {
    delegate.player->playlist->addEntry(makeTrack("Short", 500, 0.4));
    delegate.player->playlist->addEntry(makeTrack("Next", 600, 0.8));
    doubleClickRow(0);
    ASSERT_TRUE(shows("Next"));
    delegate.clearPlaylist();
    EXPECT_EQ(table().numberOfRows(), 0);
    EXPECT_TRUE(runUntil([&] { return !controls->timeView->isVisible(); })) << "the look follows the end";
    EXPECT_EQ(delegate.player->stream->position(), 0.0);
    EXPECT_EQ(controls->info1View->text(), "Next");

    delegate.player->playlist->addEntry(makeTrack("After", 700, 20));
    delegate.playlistController->reloadPlaylistData();
    Paintings paintings;
    table().viewport()->installEventFilter(&paintings);
    ASSERT_TRUE(runUntil([&] { return paintings.count > 0; }));
    paintings.count = 0;
    QTest::keyClick(delegate.window.get(), Qt::Key_Right, Qt::ControlModifier);
    ASSERT_TRUE(shows("After")) << "the only one, at the index of the one before";
    EXPECT_TRUE(runUntil([&] { return paintings.count > 0; })) << "its row shows that it plays";
}

TEST_F(WindowTest, WhatIsDroppedFromElsewhereIsAdded) {
    const auto folder = support::scratch() / "Album";
    std::filesystem::create_directories(folder / "CD 2");
    const auto odd =
        (support::scratch() / "50% #1?\xff.flac").string(); // no text, and signs that addresses use
    const auto first = (folder / "1.WAV").string();
    const auto second = (folder / "CD 2/1.mp3").string();
    for (const auto& name :
         {odd, first, second, (folder / "cover.png").string(), (folder / ".2.wav").string()})
        support::writeFile(name, "x");
    support::writeFile(support::scratch() / "list.m3u", odd + "\n");
    const auto status = [&] { return delegate.playlistController->statusLine; };
    const auto says = [&](const char* text) {
        return runUntil([&] { return status()->isVisible() && status()->text() == QLatin1String(text); });
    };
    QMimeData dropped;
    dropped.setUrls(
        {QUrl::fromEncoded(QByteArray("file://") + QByteArray::fromStdString(odd).toPercentEncoding("/")),
         QUrl::fromLocalFile(QString::fromStdString(folder.string())), QUrl("http://127.0.0.1:1/a%20b?c=d")});
    const auto drop = [&](QWidget* under) {
        QDragEnterEvent enter(QPoint(9, 9), Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(under, &enter);
        QDropEvent release(QPointF(9, 9), Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(under, &release);
        return enter.isAccepted();
    };
    EXPECT_TRUE(drop(table().viewport()));
    const auto& list = *delegate.player->playlist;
    ASSERT_TRUE(runUntil([&] { return list.entryCount() == 4; }));
    EXPECT_EQ(list.entryAt(0)->source, odd);
    EXPECT_EQ(list.entryAt(1)->source, first);
    EXPECT_EQ(list.entryAt(2)->source, second);
    EXPECT_EQ(list.entryAt(3)->source, "http://127.0.0.1:1/a%20b?c=d");
    EXPECT_EQ(table().numberOfRows(), 4);
    EXPECT_EQ(delegate.player->stream, nullptr) << "adding plays nothing";
    EXPECT_TRUE(says("1 file is not audio"));
    EXPECT_EQ(table().height(), status()->y()) << "it covers no row";

    dropped.setUrls({QUrl("http://127.0.0.1:1/live")});
    dropped.setText("http://127.0.0.1:1/live"); // the same, for those who take no more
    EXPECT_TRUE(drop(selector().lineEdit()));
    EXPECT_TRUE(runUntil([&] { return list.entryCount() == 5; }));
    EXPECT_TRUE(runUntil([&] { return !status()->isVisible(); })) << "there is nothing to say";
    dropped.setUrls({});
    EXPECT_FALSE(drop(table().viewport()));

    const auto listFile =
        QUrl::fromLocalFile(QString::fromStdString((support::scratch() / "list.m3u").string()));
    dropped.setUrls({listFile, QUrl::fromLocalFile(QString::fromStdString(folder.string()))});
    EXPECT_TRUE(drop(table().viewport()));
    ASSERT_TRUE(runUntil([&] { return list.entryCount() == 8; }));
    EXPECT_EQ(list.entryAt(0)->source, odd) << "a playlist stands for its entries";
    EXPECT_EQ(list.entryAt(1)->source, first) << "before the row under the pointer";
    support::writeFile(support::scratch() / "bad.tuq", "{");
    delegate.openSources({(support::scratch() / "bad.tuq").string(), odd});
    ASSERT_TRUE(runUntil([&] { return list.entryCount() == 9; }));
    EXPECT_TRUE(says("bad.tuq is not a playlist"));
}

TEST_F(WindowTest, AFileThatCannotBeReadOrWrittenIsNamedAndTheListStays) {
    addTracks();
    const auto path = [](const char* name) { return (support::scratch() / name).string(); };
    support::writeFile(path("broken.tuq"), "{");
    support::writeFile(path("file"), "");
    std::filesystem::create_directories(path("folder.tuq"));
    const std::tuple<const char*, std::function<void(const std::string&)>, const char*> cases[] = {
        {"broken.tuq", [&](auto& file) { delegate.openSources({file}); }, "broken.tuq is not a playlist"},
        {"missing.tuq", [&](auto& file) { delegate.openSources({file}); }, "missing.tuq was not found"},
        {"folder.tuq", [&](auto& file) { delegate.player->savePlaylist(file); },
         "No permission for folder.tuq"},
        {"file/a.tuq", [&](auto& file) { delegate.player->savePlaylist(file); }, "a.tuq was not found"},
    };
    const auto& status = *delegate.playlistController->statusLine;
    for (const auto& [name, command, text] : cases) {
        command(path(name));
        EXPECT_TRUE(runUntil([&] { return status.isVisible() && status.text() == text; })) << text;
        EXPECT_EQ(delegate.player->playlist->entryCount(), 3);
        EXPECT_TRUE(delegate.player->playlist->isChanged());
        EXPECT_EQ(delegate.player->internalPlaylistManager->count(), 0);
    }
}

TEST_F(WindowTest, AStationShowsItsNameAndEachTitleWhenItIsPlayed) {
    const std::string wav =
        support::readFile(support::writeWav(support::scratch() / "radio.wav", support::sine(440, 44100 * 8)));
    constexpr std::size_t interval = 4 * 44100 * 2; // of two seconds
    support::HttpServer radio([&](support::HttpServer::Client& client) {
        support::HttpServer::sendRadio(
            client, "<i>Station", wav, interval,
            {"StreamTitle='Caf\xe9 & \xc9t\xe9';", "StreamTitle='It's <b>Two';junk"});
        client.stall();
    });
    support::HttpServer site([&](support::HttpServer::Client& client) {
        client.send("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n[playlist]\nFile1=" + radio.url("/live") +
                    "\n");
    });
    delegate.openSources({site.url("/listen.pls")});
    ASSERT_TRUE(shows("<i>Station"));
    EXPECT_TRUE(runUntil([&] { return controls->lengthView->text() == "live"; }));
    for (const auto& [title, from] : {std::pair{"Café & Été", 2.0}, {"It's <b>Two", 4.0}}) {
        ASSERT_TRUE(shows(title));
        EXPECT_GE(delegate.player->stream->position(), from - 0.1) << "not when it is read ahead";
        EXPECT_LT(delegate.player->stream->position(), from + 1.5);
        EXPECT_EQ(controls->info2View->text(), "<i>Station");
    }
    const auto& row = static_cast<PlaylistEntryCell&>(table().preparedCell(0));
    EXPECT_EQ(row.lengthInfo(), "live");
    EXPECT_FALSE(controls->statusSlider->isEnabled());
}

TEST_F(WindowTest, KeysSlidersAndTheTimeSteerWhatPlays) {
    addTracks();
    doubleClickRow(0);
    ASSERT_TRUE(shows("One"));
    ASSERT_TRUE(runUntil([&] { return controls->lengthView->text() == "00:20"; }));
    const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers) {
        QTest::keyClick(delegate.window->focusWidget(), key, modifiers);
    };
    const auto position = [&] { return delegate.player->stream->position(); };
    click(controls->playPauseButton);
    ASSERT_TRUE(runUntil([&] { return delegate.player->playbackState() == TulPlaybackState::paused; }));
    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        double to;
    } jumps[] = {{Qt::Key_Right, Qt::ShiftModifier, 15},
                 {Qt::Key_Left, Qt::ShiftModifier, 5},
                 {Qt::Key_Left, Qt::ControlModifier | Qt::ShiftModifier, 0},
                 {Qt::Key_Right, Qt::ControlModifier | Qt::ShiftModifier, 20}};
    for (const auto& [key, modifiers, to] : jumps) {
        controls->seekTo(10);
        press(key, modifiers);
        EXPECT_NEAR(position(), to, 0.001);
    }
    controls->seekTo(12);
    EXPECT_EQ(controls->timeView->text(), "00:12");
    controls->timeView->show(); // paused, it is hidden
    click(controls->timeView);
    EXPECT_EQ(controls->timeView->text(), "−00:08");
    click(controls->timeView);
    EXPECT_EQ(controls->timeView->text(), "00:12");

    for (const auto& [key, percent] :
         {std::pair{Qt::Key_Up, 55}, {Qt::Key_Down, 50}, {Qt::Key_0, 0}, {Qt::Key_0, 50}}) {
        press(key, Qt::ControlModifier);
        EXPECT_NEAR(delegate.player->volume, percent / 100.0, 1e-6);
        EXPECT_NEAR(controls->volumeSlider->doubleValue(), percent / 100.0, 1e-6);
        EXPECT_EQ(controls->volumeCaption->text(), QString("VOLUME %1 %").arg(percent));
    }
    for (int i = 0; i < 30; ++i)
        press(Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(delegate.player->volume, 1.0F);
    const QPoint middle = controls->balanceSlider->rect().center();
    QTest::mouseClick(controls->balanceSlider, Qt::LeftButton, {}, {0, middle.y()});
    EXPECT_EQ(controls->balanceCaption->text(), "LEFT 100 %");
    QTest::mouseClick(controls->balanceSlider, Qt::LeftButton, {}, middle + QPoint(2, 0));
    EXPECT_EQ(delegate.player->balance, 0.0F);
    EXPECT_EQ(controls->balanceCaption->text(), "CENTRE");
    EXPECT_TRUE(runUntil([&] {
        return controls->balanceCaption->text() == "BALANCE" && controls->volumeCaption->text() == "VOLUME";
    }));

    EXPECT_EQ(delegate.window->focusWidget(), &table());
    QWidget* const next = delegate.window->findChild<QWidget*>("nextButton");
    next->setFocus();
    press(Qt::Key_Space, {});
    ASSERT_TRUE(shows("Two")) << "Space presses the button that has the keyboard";
    EXPECT_TRUE(delegate.player->isPlaying());
    table().setFocus();
    press(Qt::Key_Space, {});
    EXPECT_FALSE(isStarted(delegate.player->playbackState()));
}

TEST_F(WindowTest, TheListOfKeysAndTheMenuSayWhatTheCommandsDo) {
    addTracks();
    doubleClickRow(0);
    ASSERT_TRUE(shows("One"));
    const auto item = [&](const char* title) -> QAction& {
        for (QAction* action : delegate.window->actions())
            if (action->text() == QLatin1String(title)) return *action;
        throw std::runtime_error(title);
    };
    const auto isOn = [&](const char* title) {
        QMenu* const menu = qobject_cast<QMenu*>(item(title).parent());
        QMetaObject::invokeMethod(menu, "aboutToShow");
        return item(title).isChecked();
    };
    EXPECT_TRUE(isOn("Repeat List") && isOn("Spectrum"));
    for (const char* title : {"Stop After This Track", "Repeat Track", "Shuffle", "Mute", "Remaining Time"}) {
        EXPECT_FALSE(isOn(title)) << title;
        item(title).trigger();
        EXPECT_TRUE(isOn(title)) << title;
    }
    EXPECT_FALSE(isOn("Repeat List"));
    EXPECT_TRUE(static_cast<PlaylistEntryCell&>(table().preparedCell(0)).stopsAfter());
    EXPECT_FALSE(static_cast<PlaylistEntryCell&>(table().preparedCell(1)).stopsAfter());

    QTest::keyClick(delegate.window->focusWidget(), Qt::Key_F1);
    const auto* const card = delegate.window->findChild<app::Card*>();
    ASSERT_TRUE(card && card->isVisible());
    QStringList listed;
    for (const QLabel* text : card->findChildren<QLabel*>())
        listed << text->text();
    for (const QAction* action : delegate.window->actions()) {
        const QString keys = action->shortcut().toString(QKeySequence::NativeText);
        EXPECT_TRUE(keys.isEmpty() || listed.contains(keys)) << keys.toStdString();
    }
    QTest::keyClick(delegate.window->focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(card->isVisible());
    EXPECT_EQ(delegate.window->focusWidget(), &table());
}

TEST_F(WindowTest, TheCoverIsTheOneThatPlays) {
    QImage(2, 2, QImage::Format_RGB32).save(QString::fromStdString(support::scratch() / "cover.png"));
    const std::string plain = makeTrack("Plain", 700, 20);
    const std::string covered = makeTrack("Covered", 710, 20);
    support::run(
        {"metaflac", "--import-picture-from=" + (support::scratch() / "cover.png").string(), covered});
    const std::string faulty = makeTrack("Faulty", 720, 20);
    support::writeFile(support::scratch() / "junk.png", "no picture");
    support::run({"metaflac",
                  "--import-picture-from=3|image/png||2x2x24|" + (support::scratch() / "junk.png").string(),
                  faulty});
    for (const auto& path : {covered, plain, faulty})
        delegate.player->playlist->addEntry(path);
    delegate.playlistController->reloadPlaylistData();
    doubleClickRow(0);
    ASSERT_TRUE(shows("Covered"));

    QTest::keyClick(delegate.window.get(), Qt::Key_2, Qt::ControlModifier);
    const auto pictureSize = [&] { return delegate.coverArtController->coverArtView->image().size(); };
    const auto isCover = [&] { return pictureSize() == QSizeF(2, 2); };
    EXPECT_TRUE(runUntil(isCover)) << "shown when the page is first turned to";
    for (const auto& [row, title] : {std::pair{1, "Plain"}, {2, "Faulty"}}) {
        delegate.player->playlist->selectEntry(row);
        delegate.player->startCurrentEntry();
        ASSERT_TRUE(shows(title));
        EXPECT_TRUE(runUntil([&] { return !isCover(); })) << "our own picture";
        delegate.player->playlist->selectEntry(0);
        delegate.player->startCurrentEntry();
        EXPECT_TRUE(runUntil(isCover));
    }
}

/// How long this thread has worked at most between two turns of the event loop.
class LongestTurn {
public:
    LongestTurn() {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.callOnTimeout([this] { milliseconds = std::max(milliseconds, sinceLast()); });
        m_timer.start(1);
        sinceLast();
    }
    double milliseconds = 0;

private:
    double sinceLast() {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        const double now = static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
        return now - std::exchange(m_last, now);
    }
    QTimer m_timer;
    double m_last = 0;
};

TEST_F(WindowTest, AListOf100000RowsIsThereAtOnceAndReadWhileTheWindowGoesOn) {
    constexpr int rows = 100'000;
    // Twice a frame, for caches that other tests empty: what walks the whole list at once takes longer still.
    constexpr double maxTurn = 33;
    const std::string track = makeTrack("Tagged", 440, 20);
    std::string lines = "#EXTM3U\n";
    for (int i = 0; i < rows; ++i)
        lines += track + "\n";
    support::writeFile(support::scratch() / "long.m3u", lines);
    support::picture(*delegate.window); // fonts are loaded
    const LongestTurn longest;
    delegate.openSources({(support::scratch() / "long.m3u").string()});
    delegate.openSources({"/nowhere/after.flac"}); // to the list that is being opened
    ASSERT_TRUE(runUntil([&] { return table().numberOfRows() == rows + 1; }));
    ASSERT_TRUE(shows("Tagged"));
    const auto& list = *delegate.player->playlist;
    EXPECT_EQ(list.entryAt(rows)->shownTitle(), "after");

    const auto& status = *delegate.playlistController->statusLine;
    ASSERT_TRUE(runUntil([&] { return status.isVisible(); }));
    EXPECT_TRUE(status.text().startsWith("Reading "));
    EXPECT_TRUE(status.text().endsWith(" of 100,001")) << status.text().toStdString();
    table().scrollRowToVisible(rows);
    ASSERT_TRUE(runUntil([&] { return list.entryAt(rows - 2)->title == "Tagged"; })) << "seen";
    EXPECT_TRUE(list.entryAt(rows - 100)->title.empty()) << "not seen";

    EXPECT_LT(longest.milliseconds, maxTurn);
    QTest::mouseClick(&delegate.playlistController->statusLine->stopButton(), Qt::LeftButton);
    EXPECT_TRUE(runUntil([&] { return !status.isVisible(); }));
    EXPECT_TRUE(list.entryAt(rows - 100)->title.empty());
    delegate.player->playlist->moveEntries(rows - 100, rows);
    ASSERT_TRUE(runUntil([&] { return list.entryAt(rows)->title == "Tagged"; })) << "left, and seen now";
    EXPECT_TRUE(delegate.player->isPlaying());
    const auto& keeper = delegate.player->listKeeper;
    ASSERT_TRUE(runUntil([&] { return keeper.isKept(*delegate.player->playlist); }));
    EXPECT_LT(longest.milliseconds, maxTurn) << "while the changed list is stored";
    auto& field = *delegate.playlistController->searchField;
    QTest::keyClick(&table(), Qt::Key_F);
    QTest::keyClicks(&field.line(), "ter");
    EXPECT_TRUE(runUntil([&] { return field.result() == "1 of 100,001"; })) << "the last but one";
    EXPECT_EQ(table().selectedRowIndexes(), cocoa::IndexSet{rows - 1});

    delegate.clearPlaylist();
    EXPECT_TRUE(runUntil([&] { return !status.isVisible() && table().numberOfRows() == 0; }));
}

TEST_F(WindowTest, ATitleThatCannotBeShownLeavesItUsable) {
    auto entry = std::make_unique<TulPlaylistEntry>();
    entry->source = makeTrack("x", 800, 20);
    entry->title = "Caf\xe9";
    delegate.player->playlist->appendEntry(std::move(entry));
    delegate.playlistController->reloadPlaylistData();
    support::picture(*delegate.window);
    doubleClickRow(0);
    ASSERT_TRUE(shows("Error"));
    EXPECT_EQ(controls->info2View->text(), "Got faulty song info");
}

TEST_F(WindowTest, AFailedEntryShowsWhyAndPlaysWhenItIsThereAgain) {
    const std::string late = (support::scratch() / "<b>late.flac").string();
    auto& list = *delegate.player->playlist;
    list.addEntry(makeTrack("Short", 500, 0.4));
    for (const auto& source : {late, std::string("/nowhere/2.flac"), makeTrack("Last", 600, 20)})
        list.addEntry(source);
    delegate.playlistController->reloadPlaylistData();
    const auto row = [&](int index) -> const PlaylistEntryCell& {
        return static_cast<PlaylistEntryCell&>(table().preparedCell(index));
    };
    doubleClickRow(0);
    ASSERT_TRUE(shows("Last")) << "what cannot be played is skipped";
    for (const int index : {1, 2}) {
        EXPECT_TRUE(row(index).failed());
        EXPECT_EQ(row(index).info2(), "File not found");
    }
    EXPECT_FALSE(row(0).failed() || row(3).failed());

    doubleClickRow(1);
    ASSERT_TRUE(shows("File not found"));
    EXPECT_EQ(controls->info2View->text(), "<b>late") << "what the user selected stays";
    EXPECT_FALSE(controls->playPauseButton->image().isNull());
    EXPECT_FALSE(controls->timeView->isVisible());
    EXPECT_EQ(controls->lengthView->text(), "00:00");
    EXPECT_FALSE(controls->statusSlider->isEnabled());
    const auto hover = [&](int index) {
        const QPoint place = table().rectOfRow(index).center().toPoint();
        QHelpEvent rest(QEvent::ToolTip, place, table().viewport()->mapToGlobal(place));
        QApplication::sendEvent(table().viewport(), &rest);
        return QToolTip::text();
    };
    EXPECT_EQ(hover(1), "<qt>File not found</qt>");
    hover(3);
    EXPECT_TRUE(runUntil([] { return QToolTip::text().isEmpty(); }));

    std::filesystem::copy_file(makeTrack("Late", 700, 20), late);
    click(controls->playPauseButton);
    ASSERT_TRUE(runUntil([&] { return !row(1).failed(); })) << "tried again";
    EXPECT_TRUE(controls->timeView->isVisible());
    EXPECT_EQ(controls->info1View->text(), "<b>late");
}

} // namespace
