// long_list FILE [ENTRIES]: plays FILE in a list of 10,000 entries and times, in the real window, what must
// never make it stutter: scrolling, dragging a row, and the work of the two timers, each with its redrawing.

#include "app/FenAppDelegate.h"
#include "app/FenPlaylistController.h"
#include "controls/CustomWindow.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/TableView.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QMimeData>
#include <QScrollBar>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

namespace {

constexpr int steps = 500;

void time(const char* name, const std::function<void(int step)>& work) {
    std::vector<double> took;
    for (int step = 0; step < steps; ++step) {
        QElapsedTimer timer;
        timer.start();
        work(step);
        QApplication::sendPostedEvents(); // redraws
        took.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
        QApplication::processEvents();
    }
    std::sort(took.begin(), took.end());
    std::printf("%-12s median %6.3f ms, 99th percentile %6.3f, worst %6.3f\n", name, took[steps / 2],
                took[steps * 99 / 100], took.back());
}

void addEntries(TulPlaylist& playlist, const std::string& file, int count) {
    playlist.addEntry(file);
    for (int i = 1; i < count; ++i) {
        auto entry = std::make_unique<TulPlaylistEntry>("/music/" + std::to_string(i) + ".flac");
        entry->title = "Title of the piece " + std::to_string(i);
        entry->artist = "Artist " + std::to_string(i % 100);
        entry->album = "Album " + std::to_string(i % 1000);
        entry->artistAlbum = entry->artist + " - " + entry->album;
        entry->length = i % 600;
        playlist.appendEntry(std::move(entry));
    }
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    if (argc < 2) return 1;
    FenAppDelegate delegate;
    delegate.applicationDidFinishLaunching();
    TulPlayer& player = *delegate.player;
    addEntries(*player.playlist, argv[1], argc > 2 ? std::atoi(argv[2]) : 10000);
    FenPlaylistController& page = *delegate.playlistController;
    page.reloadPlaylistData();
    player.startCurrentEntry();
    for (QElapsedTimer started = {}; !started.isValid() || started.elapsed() < 1000;) {
        if (!started.isValid()) started.start();
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    cocoa::TableView& table = *page.playlistView;
    QScrollBar& bar = *table.verticalScrollBar();
    time("scrolling", [&](int step) { bar.setValue(static_cast<int>(bar.maximum() * (step % 97) / 97.0)); });
    time("dragging", [&](int step) {
        QMimeData data;
        data.setData(QStringLiteral("tuq.playlistindex"), QByteArray::number(step));
        const QPoint place(100, 20 + step * 7 % 300);
        QDragEnterEvent enter(place, Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(table.viewport(), &enter);
        QDragMoveEvent move(place, Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(table.viewport(), &move);
        QDropEvent drop(QPointF(place), Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(table.viewport(), &drop);
    });
    time("slow tick", [&](int step) {
        player.songChanged = step % 2 == 0;
        player.playlist->selectEntry(step * 19);
        delegate.performSlowUpdate();
    });
    time("fast tick", [&](int) { delegate.performFastUpdate(); });
    return 0;
}
