// opening SOURCE...: opens what is named as the program does at its start, in the real window, and times how
// long the event loop was away between two ticks of a timer of one millisecond until all tags are read. Then
// it scrolls, moves, switches and saves while everything is read again.

#include "app/FenAppDelegate.h"
#include "app/FenPlaylistController.h"
#include "controls/CustomWindow.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/TableView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;

double threadTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// How long the event loop was away, and how much of that it worked: the rest it waited for the processor,
/// which others may hold.
class Gaps : public QObject {
public:
    Gaps() {
        m_clock.start();
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.callOnTimeout([this] { tick(); });
        m_timer.start(1ms);
    }

    double now() const { return static_cast<double>(m_clock.nsecsElapsed()) / 1e6; }
    void restart() {
        m_gaps.clear();
        m_last = now();
        m_worked = threadTime();
    }
    void print(const char* what) {
        std::printf("%-28s %7.0f ms; longest gaps", what, now() - m_start);
        const auto printLongest = [&](double Gap::*length) {
            std::ranges::sort(m_gaps, std::greater(), length);
            for (std::size_t i = 0; i < std::min<std::size_t>(m_gaps.size(), 4); ++i)
                std::printf(" %.1f", m_gaps[i].*length);
        };
        printLongest(&Gap::length);
        std::printf(" ms; longest work");
        printLongest(&Gap::work);
        std::printf(" ms");
        std::printf("\n");
        std::fflush(stdout);
        restart();
        m_start = m_last;
    }

private:
    struct Gap {
        double length;
        double work;
    };
    void tick() {
        const double since = now() - m_last;
        const double worked = threadTime();
        m_gaps.push_back({since, worked - std::exchange(m_worked, worked)});
        m_last += since;
    }

    QElapsedTimer m_clock;
    QTimer m_timer;
    double m_last = 0;
    double m_worked = 0;
    double m_start = 0;
    std::vector<Gap> m_gaps;
};

void runUntil(const std::function<bool()>& condition) {
    while (!condition())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tulplayer"));
    FenAppDelegate delegate;
    delegate.applicationDidFinishLaunching();
    TulPlayer& player = *delegate.player;
    Gaps gaps;
    runUntil([&] { return gaps.now() > 1000; });
    gaps.print("idle");

    const std::vector<std::string> sources(argv + 1, argv + argc);
    delegate.openSources(sources);
    runUntil([&] { return player.playlist->entryCount() > 0; });
    gaps.print("first rows");
    double changed = gaps.now(); // rows may still come
    auto isRead = [&, rows = player.playlist->entryCount()]() mutable {
        const bool more = std::exchange(rows, player.playlist->entryCount()) != rows;
        if (more || player.tagReader.progress().total > 0) changed = gaps.now();
        return gaps.now() - changed > 100;
    };
    runUntil(isRead);
    gaps.print("all tags");
    std::printf("%lld rows\n", static_cast<long long>(player.playlist->entryCount()));

    QScrollBar& bar = *delegate.playlistController->playlistView->verticalScrollBar();
    delegate.openSources(sources);
    double scrolled = 0;
    int step = 0;
    const double until = gaps.now() + 2000;
    runUntil([&] {
        if (gaps.now() - scrolled > 10) {
            scrolled = gaps.now();
            bar.setValue(static_cast<int>(bar.maximum() * (++step % 97) / 97.0));
            const auto rows = static_cast<std::int32_t>(player.playlist->entryCount());
            if (rows > 0) player.playlist->moveEntries(step * 7919 % rows, step * 104'729 % rows);
        }
        return gaps.now() > until && isRead();
    });
    gaps.print("scrolled, moved while read");
    delegate.clearPlaylist();
    runUntil([&, end = gaps.now() + 300] { return gaps.now() > end; });
    gaps.print("cleared");
    return 0;
}
