// The window with real media, the audio library without a device in real time, and input events.

#include "app/CoverArtView.h"
#include "app/FenAppDelegate.h"
#include "app/FenCoverArtController.h"
#include "app/FenPlaylistController.h"
#include "app/ImageButton.h"
#include "app/StatusLine.h"
#include "app/TextField.h"
#include "controls/CustomWindow.h"
#include "controls/FenSpectrumAnalyzerView.h"
#include "controls/PlaylistEntryCell.h"
#include "controls/RixSlider.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/ComboBox.h"
#include "platform/cocoa/PageController.h"
#include "platform/cocoa/TableView.h"
#include "tests/support/Media.h"
#include "tests/support/TestApplication.h"

#include <QDropEvent>
#include <QHelpEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QUrl>

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <functional>
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
        return runUntil([&] { return controls->info1View->text() == QLatin1String(title); });
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

    EXPECT_LT(longest.milliseconds, 16);
    QTest::mouseClick(&delegate.playlistController->statusLine->stopButton(), Qt::LeftButton);
    EXPECT_TRUE(runUntil([&] { return !status.isVisible(); }));
    EXPECT_TRUE(list.entryAt(rows - 100)->title.empty());
    delegate.player->playlist->moveEntries(rows - 100, rows);
    ASSERT_TRUE(runUntil([&] { return list.entryAt(rows)->title == "Tagged"; })) << "left, and seen now";
    EXPECT_TRUE(delegate.player->isPlaying());
    const auto& keeper = delegate.player->listKeeper;
    ASSERT_TRUE(runUntil([&] { return keeper.isKept(*delegate.player->playlist); }));
    EXPECT_LT(longest.milliseconds, 16) << "while the changed list is stored";

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
