// editing [ENTRIES]: in a list of 100,000 rows, times what the user does to many of them, each with the
// table's part and its redrawing.

#include "app/FenAppDelegate.h"
#include "app/FenPlaylistController.h"
#include "app/editing/PlaylistEditor.h"
#include "controls/CustomWindow.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/TableView.h"

#include <QApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int rounds = 9;

/// The times of several rounds, by what was done.
class Times {
public:
    void time(const char* name, const std::function<void()>& work) {
        QElapsedTimer timer;
        timer.start();
        work();
        QApplication::sendPostedEvents(); // redraws
        m_took[name].push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
        QApplication::processEvents();
    }
    void print() {
        for (auto& [name, took] : m_took) {
            std::ranges::sort(took);
            std::printf("%-28s median %7.2f ms, worst %7.2f\n", name.c_str(), took[took.size() / 2],
                        took.back());
        }
    }

private:
    std::map<std::string, std::vector<double>> m_took;
};

TulPlaylist::Entries makeEntries(int count) {
    TulPlaylist::Entries entries;
    for (int i = 0; i < count; ++i) {
        auto& entry = entries.emplace_back(std::make_unique<TulPlaylistEntry>());
        entry->source = "/music/Artist " + std::to_string(i % 100) + "/Album/" + std::to_string(i) + ".flac";
        entry->title = "Title of the piece " + std::to_string(i * 7919 % count);
        entry->artist = "Artist " + std::to_string(i % 100);
        entry->album = "Album " + std::to_string(i % 1000);
        entry->artistAlbum = entry->artist + " - " + entry->album;
        entry->length = 1 + i % 600;
        entry->settleWithoutFile();
    }
    return entries;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const int count = argc > 1 ? std::atoi(argv[1]) : 100'000;
    FenAppDelegate delegate;
    delegate.applicationDidFinishLaunching();
    QApplication::processEvents();
    app::PlaylistEditor& editor = *delegate.editor;
    FenPlaylistController& page = *delegate.playlistController;
    cocoa::TableView& table = *page.playlistView;
    editor.add(editor.beginAdding(), {}, makeEntries(count));

    cocoa::IndexSet half;
    for (int row = 0; row < count; row += 2)
        half.insert(half.end(), row);
    const auto select = [&] { table.selectRowIndexes(half); };
    const auto undo = [&] { editor.undoAction().trigger(); };
    Times times;
    for (int round = 0; round < rounds; ++round) {
        times.time("select half", select);
        times.time("remove half", [&] { editor.remove(page.selectedRows()); });
        times.time("undo of it", undo);
        times.time("redo of it", [&] { editor.redoAction().trigger(); });
        undo();
        select();
        times.time("move half to the end", [&] { editor.move(page.selectedRows(), count); });
        times.time("undo of it (move)", undo);
        table.selectRowIndexes({count / 2});
        times.time("move one row", [&] { editor.moveDown({count / 2}); });
        times.time("undo of it (one)", undo);
        times.time("randomise", [&] { editor.randomise(); });
        times.time("undo of it (randomise)", undo);
        times.time("begin to sort", [&] { editor.sort(app::SortKey::artistAndAlbum); });
        times.time("sort, until done", [&] {
            while (editor.undoAction().text() != QLatin1String("Undo Sort"))
                QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        });
        undo();
        times.time("clear", [&] { delegate.clearPlaylist(); });
        // The list is stored first, for it was changed.
        times.time("undo of it, until done", [&] {
            undo();
            while (delegate.player->playlist->entryCount() == 0)
                QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        });
    }
    times.print();
    return 0;
}
