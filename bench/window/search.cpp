// search [ENTRIES...]: types words into the search of the real window over lists of 10,000 and 100,000 rows,
// every third of which needs more than ASCII, and times each key with its redrawing.

#include "app/FenAppDelegate.h"
#include "app/FenPlaylistController.h"
#include "app/search/SearchField.h"
#include "controls/CustomWindow.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/TableView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

double threadTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

std::unique_ptr<TulPlaylist> makeList(int rows) {
    const std::pair<const char*, const char*> artists[] = {
        {"Nord Quartet", "Northern Rooms"}, {"Røyksopp und Motörhead", "Café Été"},
        {"The Harbour Lights", "Tides"},    {"Оркестр «Север»", "Городские линии"},
        {"Trees & Co", "Weather Systems"},  {"Sigur Rós", "Ágætis byrjun"}};
    auto list = std::make_unique<TulPlaylist>();
    for (int i = 0; i < rows; ++i) {
        const auto& [artist, album] = artists[i % std::size(artists)];
        auto entry = std::make_unique<TulPlaylistEntry>();
        const std::string number = std::to_string(i);
        entry->source =
            "/music/" + std::string(artist) + "/" + album + "/" + number + " Title of a piece.flac";
        entry->title = "Title of the piece " + number;
        entry->artist = artist;
        entry->album = album;
        entry->artistAlbum = entry->artist + " - " + entry->album;
        entry->length = 200;
        list->appendEntry(std::move(entry));
    }
    return list;
}

struct Took {
    double wall; ///< Milliseconds until everything is drawn.
    double work; ///< Of them on the processor, which others may hold.
};

Took press(QWidget& target, int key, const QString& text) {
    QElapsedTimer clock;
    clock.start();
    const double before = threadTime();
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(&target, &press);
    QApplication::sendPostedEvents();
    QApplication::processEvents();
    return {static_cast<double>(clock.nsecsElapsed()) / 1e6, threadTime() - before};
}

/// Milliseconds until what was found has changed for the last time.
double waitForAll(const app::SearchField& field) {
    constexpr qint64 restMs = 300;
    QElapsedTimer clock;
    clock.start();
    QString result = field.result();
    qint64 changed = 0;
    while (clock.nsecsElapsed() - changed < restMs * 1'000'000) {
        QApplication::processEvents();
        if (field.result() != result) changed = clock.nsecsElapsed();
        result = field.result();
    }
    return static_cast<double>(changed) / 1e6;
}

void print(const char* what, std::vector<Took> keys) {
    std::ranges::sort(keys, {}, &Took::work);
    const Took& median = keys[keys.size() / 2];
    const Took& worst = keys.back();
    std::printf("  %-24s %3zu keys: median %6.1f ms (work %5.1f), worst %6.1f (work %5.1f)\n", what,
                keys.size(), median.wall, median.work, worst.wall, worst.work);
}

void measure(FenAppDelegate& delegate, int rows) {
    std::printf("%d rows\n", rows);
    FenPlaylistController& page = *delegate.playlistController;
    delegate.player->playlist = makeList(rows);
    delegate.player->tagReader.follow(*delegate.player->playlist);
    page.reloadPlaylistData();
    QApplication::processEvents();
    page.playlistView->setFocus();
    QLineEdit& line = page.searchField->line();
    std::vector<Took> first; // folds all rows
    std::vector<Took> others;
    for (const QString words : {"motorhead piece 99", "t", "оркестр сев", "zzz", "9 n"}) {
        first.push_back(press(*page.playlistView, 0, words.left(1)));
        const double rest = waitForAll(*page.searchField);
        for (const QChar letter : words.mid(1))
            others.push_back(press(line, 0, letter));
        std::printf("  \"%s\" finds %s; all rows looked through %.1f ms after the first key\n",
                    qUtf8Printable(words), qUtf8Printable(page.searchField->result()),
                    first.back().wall + rest);
        for (const int key :
             {Qt::Key_Down, Qt::Key_Down, Qt::Key_Backspace, Qt::Key_Backspace, Qt::Key_Escape})
            others.push_back(press(line, key, {}));
    }
    print("first key of a search", first);
    print("others", others);
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    FenAppDelegate delegate;
    delegate.applicationDidFinishLaunching();
    std::vector<int> counts;
    for (int i = 1; i < argc; ++i)
        counts.push_back(std::atoi(argv[i]));
    if (counts.empty()) counts = {10'000, 100'000};
    for (const int rows : counts)
        measure(delegate, rows);
    return 0;
}
