// The whole program as a person uses it: the real executable on a real screen, worked by mouse and keyboard,
// and judged by what is seen, heard, announced and found on the disk.

#include "tests/cocoa/NotificationServer.h"
#include "tests/support/Desk.h"
#include "tests/support/HttpServer.h"
#include "tests/support/Media.h"

#include <QClipboard>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusObjectPath>
#include <QElapsedTimer>
#include <QFile>
#include <QUrl>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <thread>

namespace {

using support::Desk;

/// Where things are in the window, in points.
namespace place {
constexpr QPoint minimise{336, 15};
constexpr QPoint close{360, 15};
constexpr QPoint playPause{190, 132};
constexpr QPoint next{234, 132};
constexpr QPoint selector{100, 569};
constexpr QPoint selectorArrow{352, 569};
constexpr QPoint notesDot{202, 591};
constexpr QRect pageName{60, 5, 260, 20};
constexpr QRect time{4, 50, 64, 22};
constexpr QRect title{78, 43, 224, 18};
constexpr QRect spectrum{322, 64, 45, 25};
constexpr QRect page{0, 166, 380, 382};
constexpr QRect underSelector{30, 584, 120, 40};
constexpr QRect selectorText{20, 559, 316, 21};
constexpr QPoint menu{20, 15};
constexpr QPoint position(double fraction) {
    return {18 + static_cast<int>(fraction * 344), 100};
}
constexpr QPoint volume(double fraction) {
    return {18 + static_cast<int>(fraction * 92), 132};
}
constexpr QPoint row(int index) {
    return {150, 166 + 55 * index + 28};
}
/// Its second line, which a file's tags fill.
constexpr QRect rowSecondLine(int index) {
    return {30, 166 + 55 * index + 28, 285, 22};
}
/// Its two lines of text.
constexpr QRect rowText(int index) {
    return {30, 166 + 55 * index + 6, 285, 44};
}
/// The line below it, as wide as the window: no dialog that is over the rows has one.
constexpr QRect rowLine(int index) {
    return {0, 166 + 55 * index + 54, 380, 1};
}
} // namespace place

bool isInk(QRgb pixel) {
    return std::max({qRed(pixel), qGreen(pixel), qBlue(pixel)}) > 130;
}

int ink(const QImage& image) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += isInk(image.pixel(x, y)) ? 1 : 0;
    return count;
}

/// Whether both show the same text, in whatever colours.
bool sameText(const QImage& one, const QImage& other) {
    int differing = 0;
    for (int y = 0; y < one.height(); ++y)
        for (int x = 0; x < one.width(); ++x)
            differing += isInk(one.pixel(x, y)) != isInk(other.pixel(x, y)) ? 1 : 0;
    return ink(one) > 0 && differing < ink(one) / 4;
}

/// Whether most of what is written there is yellow.
bool isActive(const QImage& row) {
    int yellow = 0;
    for (int y = 0; y < row.height(); ++y)
        for (int x = 0; x < row.width(); ++x) {
            const QRgb pixel = row.pixel(x, y);
            yellow += isInk(pixel) && qRed(pixel) > qBlue(pixel) ? 1 : 0;
        }
    return yellow > ink(row) / 2;
}

/// A tone as a file of the kind that `name` ends in, by the format's own encoder.
QString makeTrack(const std::string& name, const std::vector<double>& tones, double secondsEach,
                  const std::string& cover = {}) {
    std::vector<std::int16_t> samples;
    for (const double hertz : tones) {
        const auto part = support::sine(hertz, static_cast<std::size_t>(secondsEach * 44100));
        samples.insert(samples.end(), part.begin(), part.end());
    }
    const auto wav = support::writeWav(support::scratch() / "raw.wav", samples).string();
    const auto path = (support::scratch() / name).string();
    const auto title = name.substr(0, name.find('.'));
    if (name.ends_with(".flac")) {
        std::vector<std::string> command{
            "flac", "-s", "-f", "-T", "TITLE=" + title, "-T", "ARTIST=Trees & Co"};
        if (!cover.empty()) command.push_back("--picture=" + cover);
        command.insert(command.end(), {"-o", path, wav});
        support::run(command);
    } else if (name.ends_with(".mp3")) {
        support::run({"lame", "--quiet", "--tt", title, "--ta", "Trees", wav, path});
    } else {
        support::run({"opusenc", "--quiet", "--title", title, "--artist", "Trees", wav, path});
    }
    return QString::fromStdString(path);
}

std::string makeCover() {
    const auto ppm = support::scratch() / "cover.ppm";
    std::string pixels;
    for (int i = 0; i < 64 * 64; ++i)
        pixels += "\xc8\x32\x28";
    support::writeFile(ppm, "P6\n64 64\n255\n" + pixels);
    const auto png = support::scratch() / "cover.png";
    support::run({"ffmpeg", "-y", "-i", ppm.string(), png.string()});
    return png.string();
}

bool isCoverColour(QRgb pixel) {
    return std::abs(qRed(pixel) - 0xc8) + std::abs(qGreen(pixel) - 0x32) + std::abs(qBlue(pixel) - 0x28) < 12;
}

class RoadTest : public testing::Test {
protected:
    void start(const QStringList& files = {}) { desk.start(QStringLiteral(TUL_PLAYER), files); }
    QStringList threeTracks() {
        return {makeTrack("Alder.flac", {440, 880}, 45), makeTrack("Birch in May.opus", {600}, 40),
                makeTrack("Cedar.mp3", {1500}, 40)};
    }
    bool plays(double hertz) {
        return Desk::until([&] { return desk.plays(hertz); });
    }
    bool fallsSilent() {
        return Desk::until([&] { return desk.loudness(desk.recordedFrames() - 4410).back() < 0.001; });
    }
    bool showsRows(int count) {
        const auto isThere = [&](int row) {
            return row < 0 || ink(desk.seen(place::rowLine(row))) == place::rowLine(row).width();
        };
        return Desk::until([&] { return isThere(count - 1) && !isThere(count); });
    }
    bool rowsAreRead(int count) {
        return Desk::until([&] {
            for (int row = 0; row < count; ++row)
                if (ink(desk.seen(place::rowSecondLine(row))) == 0) return false;
            return true;
        });
    }
    bool rowShows(int row, const QImage& text) {
        return Desk::until([&] { return sameText(text, desk.seen(place::rowText(row))); });
    }
    bool showsDialog(const char* title) {
        return Desk::until([&] { return desk.activeWindow().startsWith(QLatin1String(title)); });
    }
    /// Into the dialog that `keys` bring.
    void answer(const std::string& keys, const char* dialog, const std::string& text) {
        desk.key(keys);
        ASSERT_TRUE(showsDialog(dialog));
        desk.type(text);
        desk.key("Return");
        ASSERT_TRUE(showsDialog("Tulplayer"));
    }
    void renameList(const std::string& name) {
        desk.click(place::selector);
        desk.key("ctrl+a");
        desk.type(name);
        desk.key("Return");
    }
    /// In the selector.
    void chooseFirstList() {
        const QImage closed = desk.seen(place::underSelector);
        desk.click(place::selectorArrow);
        ASSERT_TRUE(Desk::until([&] { return desk.seen(place::underSelector) != closed; }));
        desk.key("Home");
        desk.key("Return");
    }
    static std::string documentPath(const std::string& name) {
        return std::string(std::getenv("HOME")) + "/Documents/" + name;
    }
    static std::string document(const std::string& name) {
        const std::filesystem::path path = documentPath(name);
        return std::filesystem::exists(path) ? support::readFile(path) : std::string();
    }

    Desk desk;
};

TEST_F(RoadTest, FilesAreAddedPlayedPausedSoughtAndPassed) {
    const QStringList tracks = threeTracks();
    start();
    EXPECT_EQ(ink(desk.seen(place::time)), 0) << "nothing has played yet";
    std::string names;
    for (const QString& track : tracks)
        names += '"' + track.toStdString() + "\" ";
    answer("ctrl+o", "Add a file to the current playlist", names);
    ASSERT_TRUE(showsRows(3));
    EXPECT_FALSE(desk.plays(440)) << "adding plays nothing";

    const QImage idleButton = desk.seen(QRect(170, 112, 40, 40));
    desk.doubleClick(place::row(1));
    ASSERT_TRUE(plays(600));
    EXPECT_TRUE(Desk::until([&] {
        return isActive(desk.seen(place::rowText(1))) && ink(desk.seen(place::time)) > 0 &&
               ink(desk.seen(place::title)) > 0;
    }));
    EXPECT_FALSE(isActive(desk.seen(place::rowText(0))));

    const auto loudness = desk.loudness(desk.recordedFrames() - 4410);
    const double full = *std::max_element(loudness.begin(), loudness.end());
    EXPECT_NEAR(full, 0.5 * 0.5 * std::sqrt(0.5), 0.02) << "half of the loudness, at first";
    const std::size_t pausedAt = desk.recordedFrames();
    desk.click(place::playPause);
    const auto silent = [&] {
        const auto recorded = desk.loudness(pausedAt);
        return recorded.size() > 10 && *std::max_element(recorded.end() - 10, recorded.end()) < 0.001;
    };
    ASSERT_TRUE(Desk::until(silent));
    EXPECT_TRUE(Desk::until([&] { return ink(desk.seen(place::time)) == 0; }));
    int fading = 0;
    double before = full;
    for (const double now : desk.loudness(pausedAt)) {
        EXPECT_LT(now, before + 0.02) << "it only grows quieter";
        before = now;
        fading += now > 0.05 * full && now < 0.95 * full ? 1 : 0;
    }
    EXPECT_GE(fading, 11) << "a fade of 300 ms, in steps of 20";
    EXPECT_LE(fading, 17);
    desk.key("space");
    ASSERT_TRUE(plays(600));
    EXPECT_NEAR(desk.loudness(desk.recordedFrames() - 1764).front(), full, 0.02);
    EXPECT_TRUE(Desk::until([&] { return ink(desk.seen(place::time)) > 0; }));

    desk.click(place::next);
    ASSERT_TRUE(plays(1500));
    desk.click(place::next);
    ASSERT_TRUE(plays(440)) << "past the last the list begins again";
    EXPECT_TRUE(Desk::until([&] { return isActive(desk.seen(place::rowText(0))); }));
    desk.click(place::position(0.75));
    EXPECT_TRUE(plays(880)) << "its second half";
    desk.press(place::volume(0.5));
    desk.moveTo(place::volume(0.2));
    desk.moveTo(place::volume(0.0));
    desk.release();
    EXPECT_TRUE(fallsSilent());
}

TEST_F(RoadTest, ListsAreOrderedNamedSavedSwitchedAndThereAfterARestart) {
    const std::string tone = support::readFile(
        support::writeWav(support::scratch() / "radio.wav", support::sine(2200, 40 * 44100)));
    support::HttpServer radio([&](auto& client) { support::HttpServer::sendFile(client, tone); });
    start(threeTracks());
    ASSERT_TRUE(showsRows(3));
    ASSERT_TRUE(plays(440));
    ASSERT_TRUE(Desk::until([&] { return isActive(desk.seen(place::rowText(0))); }));
    ASSERT_TRUE(rowsAreRead(3));
    const QImage alder = desk.seen(place::rowText(0));
    const QImage birch = desk.seen(place::rowText(1));
    const QImage cedar = desk.seen(place::rowText(2));
    ASSERT_FALSE(sameText(alder, birch) || sameText(birch, cedar));

    desk.press(place::row(0));
    desk.moveTo(place::row(0) + QPoint(10, 20));
    desk.moveTo(place::row(1));
    desk.moveTo(place::row(2));
    ASSERT_TRUE(Desk::until([&] { return !sameText(cedar, desk.seen(place::rowText(2))); }))
        << "the row in the hand covers it";
    desk.release();
    desk.moveTo(place::title.center());
    EXPECT_TRUE(rowShows(0, birch));
    EXPECT_TRUE(rowShows(1, cedar));
    EXPECT_TRUE(rowShows(2, alder));

    renameList("Road trip");
    answer("ctrl+s", "Save playlist...", documentPath("road.tuq"));
    ASSERT_TRUE(
        Desk::until([] { return document("playlists.json").find("Road trip") != std::string::npos; }));
    const std::string saved = document("road.tuq");
    EXPECT_LT(saved.find("Birch in May.opus"), saved.find("Cedar.mp3"));
    EXPECT_LT(saved.find("Cedar.mp3"), saved.find("Alder.flac"));
    EXPECT_NE(saved.find("Alder.flac"), std::string::npos);
    EXPECT_NE(saved.find("Road trip"), std::string::npos);

    desk.key("ctrl+n");
    ASSERT_TRUE(showsRows(0));
    EXPECT_TRUE(plays(440)) << "clearing leaves what plays";
    answer("ctrl+u", "Stream address", radio.url("/tone.wav"));
    ASSERT_TRUE(showsRows(1));
    desk.doubleClick(place::row(0));
    EXPECT_TRUE(plays(2200));
    renameList("Radio");
    answer("ctrl+s", "Save playlist...", documentPath("radio"));
    ASSERT_TRUE(Desk::until([] { return document("playlists.json").find("Radio") != std::string::npos; }));
    EXPECT_NE(document("radio.tuq").find(radio.url("/tone.wav")), std::string::npos);

    chooseFirstList();
    ASSERT_TRUE(showsRows(3));
    EXPECT_TRUE(rowShows(0, birch) && rowShows(1, cedar) && rowShows(2, alder));
    EXPECT_TRUE(plays(600)) << "a list that is opened plays";

    desk.click(place::close);
    ASSERT_TRUE(desk.ended());
    start();
    EXPECT_TRUE(showsRows(0));
    chooseFirstList();
    ASSERT_TRUE(showsRows(3));
    EXPECT_TRUE(rowShows(0, birch) && rowShows(1, cedar) && rowShows(2, alder));
    desk.doubleClick(place::row(1));
    EXPECT_TRUE(plays(1500));
    answer("ctrl+l", "Open a playlist file", documentPath("radio.tuq"));
    EXPECT_TRUE(showsRows(1));
    EXPECT_TRUE(plays(2200));
}

/// The desktop's file manager: what it is asked to show.
class FileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    QStringList shown;

public Q_SLOTS:
    void ShowItems(const QStringList& addresses, const QString& /*startup*/) { shown = addresses; }
};

TEST_F(RoadTest, RowsAreEditedByKeysDragAndMenuAndTakenBack) {
    FileManager fileManager;
    QDBusConnection bus = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                                                        QStringLiteral("files"));
    ASSERT_TRUE(bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &fileManager,
                                   QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(bus.registerService(QStringLiteral("org.freedesktop.FileManager1")));
    const QStringList tracks = threeTracks();
    start(tracks);
    ASSERT_TRUE(showsRows(3));
    ASSERT_TRUE(plays(440));
    ASSERT_TRUE(Desk::until([&] { return isActive(desk.seen(place::rowText(0))); }));
    ASSERT_TRUE(rowsAreRead(3));
    const QImage alder = desk.seen(place::rowText(0));
    const QImage birch = desk.seen(place::rowText(1));
    const QImage cedar = desk.seen(place::rowText(2));

    desk.click(place::row(1));
    desk.key("shift+Down");
    desk.press(place::row(2));
    desk.moveTo(place::row(2) + QPoint(10, -20));
    desk.moveTo(place::row(0) + QPoint(10, 10));
    desk.moveTo(place::row(0));
    ASSERT_TRUE(Desk::until([&] { return !sameText(alder, desk.seen(place::rowText(0))); }))
        << "the rows in the hand cover it";
    desk.release();
    desk.moveTo(place::title.center());
    EXPECT_TRUE(rowShows(0, birch) && rowShows(1, cedar) && rowShows(2, alder));
    EXPECT_TRUE(isActive(desk.seen(place::rowText(2))));
    desk.key("ctrl+z");
    EXPECT_TRUE(rowShows(0, alder) && rowShows(1, birch));
    desk.key("ctrl+shift+z");
    EXPECT_TRUE(rowShows(0, birch) && rowShows(2, alder));
    desk.key("alt+Down");
    EXPECT_TRUE(rowShows(0, alder) && rowShows(1, birch) && rowShows(2, cedar));
    desk.key("alt+Up");
    EXPECT_TRUE(rowShows(2, alder));

    desk.click(place::row(2));
    desk.key("Delete");
    ASSERT_TRUE(showsRows(2));
    EXPECT_TRUE(desk.plays(440)) << "what plays is played to its end";
    desk.key("ctrl+z");
    ASSERT_TRUE(showsRows(3));
    EXPECT_TRUE(isActive(desk.seen(place::rowText(2)))) << "it is still the one that plays";
    desk.key("Delete");
    ASSERT_TRUE(showsRows(2));
    desk.click(place::next);
    EXPECT_TRUE(plays(600)) << "its successor, past the end";

    const QImage before = desk.seen(place::rowText(1));
    desk.rightClick(place::row(1));
    ASSERT_TRUE(Desk::until([&] { return desk.seen(place::rowText(1)) != before; }));
    for (const char* key : {"Down", "Down", "Down", "Return"})
        desk.key(key); // Remove
    ASSERT_TRUE(showsRows(1));
    EXPECT_TRUE(rowShows(0, birch));
    desk.key("Menu");
    for (const char* key : {"Up", "Up", "Up", "Return"})
        desk.key(key); // Show in File Manager
    ASSERT_TRUE(Desk::until([&] { return !fileManager.shown.empty(); }));
    EXPECT_EQ(fileManager.shown, QStringList(QUrl::fromLocalFile(tracks[1]).toEncoded()));
    desk.key("ctrl+c");
    EXPECT_TRUE(Desk::until([&] { return QGuiApplication::clipboard()->text() == tracks[1]; }));

    desk.key("alt+Return");
    ASSERT_TRUE(Desk::until([&] { return ink(desk.seen(place::page)) > 2000; })) << "the information panel";
    desk.key("Escape");
    ASSERT_TRUE(rowShows(0, birch));
    desk.key("Delete");
    ASSERT_TRUE(showsRows(0)) << "the keyboard is the list's again";
    desk.key("ctrl+n");
    for (int i = 0; i < 3; ++i)
        desk.key("ctrl+z");
    EXPECT_TRUE(showsRows(3));
    EXPECT_TRUE(rowShows(0, birch) && rowShows(1, cedar) && rowShows(2, alder));
    EXPECT_TRUE(desk.plays(600)) << "editing leaves what plays";
}

TEST_F(RoadTest, ChangesThatAreNotSavedSurviveAKill) {
    const auto mark = [&] {
        const QImage text = desk.seen(place::selectorText);
        int yellow = 0;
        for (int y = 0; y < text.height(); ++y)
            for (int x = 0; x < text.width(); ++x)
                yellow += qRed(text.pixel(x, y)) > 180 && qBlue(text.pixel(x, y)) < 90 ? 1 : 0;
        return yellow > 10;
    };
    const auto dragFirstRowToTheThird = [&] {
        desk.press(place::row(0));
        desk.moveTo(place::row(0) + QPoint(10, 20));
        desk.moveTo(place::row(1));
        desk.moveTo(place::row(2));
        desk.release();
        desk.moveTo(place::title.center());
    };
    const auto killSoonAndRestart = [&] {
        QElapsedTimer since;
        since.start();
        EXPECT_TRUE(Desk::until([&] { return since.elapsed() >= 1000; })) << "what is allowed to be lost";
        desk.signal(SIGKILL);
        EXPECT_FALSE(desk.ended());
        start();
        EXPECT_TRUE(showsRows(0));
    };
    start(threeTracks());
    ASSERT_TRUE(showsRows(3));
    ASSERT_TRUE(Desk::until([&] { return isActive(desk.seen(place::rowText(0))); }));
    ASSERT_TRUE(rowsAreRead(3));
    const QImage alder = desk.seen(place::rowText(0));
    const QImage birch = desk.seen(place::rowText(1));
    dragFirstRowToTheThird();
    killSoonAndRestart();
    chooseFirstList(); // that without a name
    ASSERT_TRUE(showsRows(3));
    EXPECT_TRUE(rowShows(0, birch) && rowShows(2, alder));
    EXPECT_TRUE(plays(440)) << "where it was";

    renameList("Trip");
    answer("ctrl+s", "Save playlist...", documentPath("trip.tuq"));
    ASSERT_TRUE(Desk::until([] { return document("playlists.json").find("Trip") != std::string::npos; }));
    const std::string saved = document("trip.tuq");
    EXPECT_FALSE(mark());
    renameList("Long trip");
    dragFirstRowToTheThird();
    ASSERT_TRUE(rowShows(1, alder));
    EXPECT_TRUE(Desk::until(mark));
    killSoonAndRestart();
    EXPECT_EQ(document("trip.tuq"), saved);
    EXPECT_NE(document("playlists.json").find("Long trip"), std::string::npos);
    chooseFirstList();
    EXPECT_TRUE(rowShows(1, alder) && rowShows(2, birch));
    EXPECT_TRUE(Desk::until(mark));

    desk.click(place::menu);
    for (int i = 0; i < 7; ++i) // from below: "Playlist"
        desk.key("Up");
    for (const char* key : {"Right", "Down", "Return"}) // "Revert to Saved"
        desk.key(key);
    EXPECT_TRUE(rowShows(0, birch) && rowShows(2, alder));
    EXPECT_TRUE(Desk::until([&] { return !mark(); }));
    EXPECT_TRUE(desk.plays(440)) << "what plays goes on";
}

TEST_F(RoadTest, PagesTurnTheSpectrumRestsAndAMinimisedWindowPlaysOn) {
    start({makeTrack("Elder.flac", {2000}, 110, makeCover())});
    ASSERT_TRUE(plays(2000));
    ASSERT_TRUE(showsRows(1));
    const auto page = [&] { return desk.seen(place::page); };
    const QImage listName = desk.seen(place::pageName);
    const auto name = [&] { return desk.seen(place::pageName); };

    desk.key("ctrl+2");
    ASSERT_TRUE(Desk::until([&] { return isCoverColour(page().pixel(page().rect().center())); }));
    ASSERT_TRUE(Desk::until([&] { return !sameText(listName, name()); }));
    const QImage coverName = name();
    desk.click(place::notesDot);
    ASSERT_TRUE(Desk::until(
        [&] { return !sameText(coverName, name()) && !sameText(listName, name()) && ink(page()) > 1000; }));
    EXPECT_FALSE(isCoverColour(page().pixel(page().rect().center())));
    desk.key("ctrl+1");
    ASSERT_TRUE(
        Desk::until([&] { return sameText(listName, name()) && ink(desk.seen(place::rowText(0))) > 0; }));

    const auto bars = [&] { return ink(desk.seen(place::spectrum)); };
    ASSERT_TRUE(Desk::until([&] { return bars() > 20; }));
    desk.key("ctrl+e");
    ASSERT_TRUE(Desk::until([&] { return bars() == 0; }));
    desk.key("ctrl+e");
    ASSERT_TRUE(Desk::until([&] { return bars() > 20; }));

    desk.click(place::minimise);
    ASSERT_TRUE(Desk::until([&] { return ink(page()) == 0 && ink(name()) == 0 && bars() == 0; }));
    EXPECT_TRUE(desk.plays(2000));
    desk.turnBack();
    EXPECT_TRUE(Desk::until([&] { return sameText(listName, name()) && bars() > 20; }));
    desk.key("ctrl+q");
    EXPECT_TRUE(desk.ended());
}

TEST_F(RoadTest, ASongIsAnnouncedOnlyToAPersonWhoLooksElsewhere) {
    NotificationServer notifications;
    QDBusConnection bus = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                                                        QStringLiteral("notifications"));
    ASSERT_TRUE(bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), &notifications,
                                   QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(bus.registerService(QStringLiteral("org.freedesktop.Notifications")));
    const auto& received = notifications.received;
    const QString last = makeTrack("Elm & Oak.flac", {600}, 100, makeCover());
    start({makeTrack("Alder.flac", {440}, 12), "/nowhere/gone.flac", last});
    ASSERT_TRUE(plays(440));
    ASSERT_TRUE(Desk::until([&] { return ink(desk.seen(place::title)) > 0; }));
    const QImage firstTitle = desk.seen(place::title);
    desk.turnAway();
    ASSERT_TRUE(desk.plays(440)) << "this machine is too slow for a track of 12 seconds";
    ASSERT_TRUE(plays(600));
    ASSERT_TRUE(Desk::until([&] { return !received.empty(); }));
    EXPECT_EQ(received.front().application, "Tulplayer");
    EXPECT_EQ(received.front().title, "Elm & Oak")
        << "neither the song that began before their eyes nor what does not play";
    EXPECT_EQ(received.front().body, "Trees &amp; Co") << "the body is markup";
    EXPECT_EQ(received.front().replaces, 0U);
    EXPECT_EQ(received.front().hints.value("desktop-entry"), "org.tulplayer.Tulplayer");
    const QImage picture = received.front().picture();
    ASSERT_EQ(picture.size(), QSize(64, 64));
    EXPECT_TRUE(isCoverColour(picture.pixel(32, 32)));

    desk.turnBack();
    desk.click(place::next);
    ASSERT_TRUE(plays(440));
    ASSERT_TRUE(Desk::until([&] { return sameText(firstTitle, desk.seen(place::title)); }));
    desk.turnAway();
    ASSERT_TRUE(plays(600));
    ASSERT_TRUE(Desk::until([&] { return received.size() > 1; }));
    EXPECT_EQ(received.size(), 2U);
    EXPECT_EQ(received.back().title, "Elm & Oak") << "nothing was said of the one before";
    EXPECT_EQ(received.back().replaces, 41U) << "it takes the place of the first";

    const std::string wav = support::readFile(
        support::writeWav(support::scratch() / "radio.wav", support::sine(2200, 30 * 44100)));
    support::HttpServer radio([&](auto& client) {
        support::HttpServer::sendRadio(client, "Station", wav, 4 * 44100 * 3, {"StreamTitle='Fig & Fir';"});
        client.stall();
    });
    desk.turnBack();
    answer("ctrl+u", "Stream address", radio.url("/live"));
    ASSERT_TRUE(showsRows(4));
    desk.doubleClick(place::row(3));
    desk.turnAway();
    ASSERT_TRUE(plays(2200));
    ASSERT_TRUE(Desk::until([&] { return received.back().title == "Fig & Fir"; }));
    EXPECT_EQ(received.back().body, "Station");
}

/// As a computer that sleeps: player and sound server stand still, the connection is gone when they wake, and
/// the network is back later.
TEST_F(RoadTest, ARadioGoesOnAfterASleep) {
    const std::string tone = support::readFile(makeTrack("radio.mp3", {2200}, 60).toStdString());
    std::atomic<bool> isConnected{true};
    support::HttpServer radio([&](auto& client) {
        if (!isConnected ||
            !client.send("HTTP/1.0 200 OK\r\nicy-name: Station\r\nContent-Type: audio/mpeg\r\n\r\n"))
            return;
        constexpr std::size_t block = 16'000; // a second
        constexpr std::size_t ahead = 4 * block;
        for (std::size_t at = 0; isConnected && at < tone.size(); at += block) {
            if (!client.send(std::string_view(tone).substr(at, block))) return;
            for (int i = 0; at >= ahead && isConnected && i < 20; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    });
    start({QString::fromStdString(radio.url("/live"))});
    ASSERT_TRUE(plays(2200));
    desk.signal(SIGSTOP);
    desk.freezeSound(true);
    isConnected = false;
    std::this_thread::sleep_for(std::chrono::seconds(3)); // the sleep itself
    const int requests = radio.requestCount();
    desk.freezeSound(false);
    desk.signal(SIGCONT);
    ASSERT_TRUE(Desk::until([&] { return radio.requestCount() > requests; })) << "without being received";
    ASSERT_TRUE(fallsSilent());
    isConnected = true;
    EXPECT_TRUE(plays(2200));
}

/// A panel with the desktop's media keys: what it is received of the player.
class MediaPanel : public QObject {
    Q_OBJECT
public:
    QVariantMap received;
    std::vector<qlonglong> jumps;

public Q_SLOTS:
    void changed(const QString& /*interface*/, const QVariantMap& properties, const QStringList& /*others*/) {
        received.insert(properties);
    }
    void sought(qlonglong position) { jumps.push_back(position); }
};

TEST_F(RoadTest, MediaKeysAndPanelsOfTheDesktopSteerIt) {
    const QString name = QStringLiteral("org.mpris.MediaPlayer2.tulplayer");
    const QString path = QStringLiteral("/org/mpris/MediaPlayer2");
    const QString interface = QStringLiteral("org.mpris.MediaPlayer2.Player");
    QDBusConnection bus = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                                                        QStringLiteral("panel"));
    MediaPanel panel;
    bus.connect(name, path, QStringLiteral("org.freedesktop.DBus.Properties"),
                QStringLiteral("PropertiesChanged"), &panel,
                SLOT(changed(QString, QVariantMap, QStringList)));
    bus.connect(name, path, interface, QStringLiteral("Seeked"), &panel, SLOT(sought(qlonglong)));
    const auto metadata = [&] { return qdbus_cast<QVariantMap>(panel.received.value("Metadata")); };
    const auto tells = [&](const char* status) {
        return Desk::until([&] { return panel.received.value("PlaybackStatus") == QLatin1String(status); });
    };

    const auto tellsJump = [&](double seconds, double within) {
        return Desk::until([&] {
            return std::any_of(panel.jumps.begin(), panel.jumps.end(),
                               [&](qlonglong to) { return std::abs(to / 1e6 - seconds) < within; });
        });
    };

    start({makeTrack("Elm & Oak.flac", {440, 880}, 45, makeCover())});
    const QString last = makeTrack("Fir.mp3", {1500}, 40);
    ASSERT_TRUE(plays(440));
    ASSERT_TRUE(tells("Playing"));
    EXPECT_EQ(metadata().value("xesam:title"), "Elm & Oak");
    EXPECT_TRUE(Desk::until([&] { return metadata().value("xesam:artist") == QStringList("Trees & Co"); }));
    EXPECT_EQ(metadata().value("mpris:length"), 90'000'000LL);
    const auto cover = [&] { return QUrl(metadata().value("mpris:artUrl").toString()).toLocalFile(); };
    ASSERT_TRUE(Desk::until([&] { return !QImage(cover()).isNull(); }));
    const QString coverFile = cover();
    EXPECT_TRUE(isCoverColour(QImage(coverFile).pixel(32, 32)));
    const auto track = metadata().value("mpris:trackid").value<QDBusObjectPath>();

    QDBusInterface player(name, path, interface, bus);
    const auto ask = [&](const char* method, const QVariantList& arguments = {}) {
        const auto reply = player.callWithArgumentList(QDBus::BlockWithGui, method, arguments);
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    };
    ask("Play");
    EXPECT_TRUE(desk.plays(440)) << "what plays goes on";
    ask("PlayPause");
    player.setProperty("Volume", 0.4);
    ask("Pause");
    ASSERT_TRUE(fallsSilent()) << "the volume does not end the pause";
    EXPECT_TRUE(tells("Paused"));
    EXPECT_TRUE(Desk::until([&] { return ink(desk.seen(place::time)) == 0; }));
    ask("PlayPause");
    ASSERT_TRUE(tells("Playing"));
    ASSERT_TRUE(plays(440));

    desk.click(place::position(0.75));
    ASSERT_TRUE(plays(880));
    EXPECT_TRUE(tellsJump(67.5, 3)) << "by the hand on the slider";
    ask("SetPosition", {QVariant::fromValue(QDBusObjectPath("/another/track")), 1'000'000LL});
    ask("SetPosition", {QVariant::fromValue(track), 91'000'000LL});
    EXPECT_TRUE(desk.plays(880)) << "no place in what plays";
    ask("SetPosition", {QVariant::fromValue(track), 1'000'000LL});
    EXPECT_TRUE(tellsJump(1, 0.5));
    ASSERT_TRUE(plays(440));
    ask("Seek", {50'000'000LL});
    EXPECT_TRUE(plays(880));

    desk.key("ctrl+u");
    ASSERT_TRUE(showsDialog("Stream address"));
    ask("OpenUri", {QUrl::fromLocalFile(last).toString()});
    desk.key("Escape");
    ASSERT_TRUE(showsRows(2)) << "when the prompt is done";
    EXPECT_TRUE(desk.plays(880)) << "what plays goes on";
    ask("Seek", {std::numeric_limits<qlonglong>::max()});
    ASSERT_TRUE(plays(1500)) << "past the end the next begins";
    ASSERT_TRUE(Desk::until([&] { return metadata().value("xesam:title") == "Fir"; }));
    EXPECT_NE(metadata().value("mpris:trackid").value<QDBusObjectPath>(), track);
    EXPECT_FALSE(metadata().contains("mpris:artUrl"));
    EXPECT_FALSE(QFile::exists(coverFile));

    EXPECT_EQ(panel.received.value("LoopStatus"), "Playlist");
    player.setProperty("LoopStatus", "Track");
    player.setProperty("Shuffle", true);
    EXPECT_TRUE(Desk::until([&] {
        return panel.received.value("LoopStatus") == "Track" && panel.received.value("Shuffle") == true;
    }));
    player.setProperty("LoopStatus", "Whatever");
    EXPECT_EQ(player.property("LoopStatus"), "Track");

    player.setProperty("Volume", -3.0);
    EXPECT_TRUE(fallsSilent());
    EXPECT_TRUE(Desk::until([&] { return panel.received.value("Volume") == 0.0; }));
    player.setProperty("Volume", 7.0);
    ASSERT_TRUE(plays(1500));
    ask("Stop");
    EXPECT_TRUE(tells("Stopped"));
    EXPECT_TRUE(fallsSilent());
    EXPECT_EQ(player.property("PlaybackStatus"), "Stopped");
    QDBusInterface(name, path, QStringLiteral("org.mpris.MediaPlayer2"), bus).asyncCall("Quit");
    EXPECT_TRUE(desk.ended());
}

} // namespace

#include "RoadTest.moc"
