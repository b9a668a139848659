// What the real program finds again of its last run, however that ended.

#include "tests/app/Starts.h"
#include "tests/support/HttpServer.h"

#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>

namespace {

using starts::reaches;
using starts::start;
using starts::status;
using starts::track;
using support::Desk;
namespace fs = std::filesystem;

fs::path stateFile(const char* name) {
    return fs::path(std::getenv("HOME")) / ".local/state/tulplayer" / name;
}

/// The upper left corner of the window that has the keyboard.
QPoint windowPlace() {
    QProcess tool;
    tool.start("xdotool", {"getactivewindow", "getwindowgeometry", "--shell"});
    tool.waitForFinished();
    const auto match =
        QRegularExpression("X=(-?\\d+)\nY=(-?\\d+)").match(QString::fromUtf8(tool.readAllStandardOutput()));
    return {match.captured(1).toInt(), match.captured(2).toInt()};
}

class SessionTest : public testing::Test {
protected:
    SessionTest() { fs::rename(track("Second.wav", 880), odd); }
    static void setRestores(bool restores) {
        const fs::path folder = fs::path(std::getenv("HOME")) / ".config/tulplayer";
        fs::create_directories(folder);
        support::writeFile(folder / "settings.json",
                           restores ? R"({"RestoresSession": true})" : R"({"RestoresSession": false})");
    }
    void startPlayer(const QStringList& arguments = {}) { desk.start(QStringLiteral(TUL_PLAYER), arguments); }
    bool plays(double hertz) {
        return Desk::until([&] { return desk.plays(hertz); });
    }
    void end(int signal) {
        desk.signal(signal);
        EXPECT_EQ(desk.ended(), signal == SIGTERM);
    }
    static QJsonObject stored() {
        if (!fs::exists(stateFile("session.json"))) return {};
        const auto text = support::readFile(stateFile("session.json"));
        return QJsonDocument::fromJson(QByteArray::fromStdString(text)).object();
    }

    Desk desk;
    const std::string first = track("First.wav", 440);
    const std::string third = track("Third.wav", 1500);
    const std::string odd = (support::scratch() / "Zweite\xff.wav").string();
};

TEST_F(SessionTest, ReturnsPausedWhereItEnded) {
    setRestores(true);
    const auto list = (support::scratch() / "List.m3u").string();
    support::writeFile(list, first + "\n" + odd + "\n" + third + "\n");
    struct Case {
        const char* name;
        QStringList opened;
        std::vector<std::string> appended;
        int count;
        int signal;
    };
    const std::initializer_list<Case> cases{
        {"a playlist file", {QString::fromStdString(list)}, {}, 3, SIGTERM},
        {"unsaved changes of it", {QString::fromStdString(list)}, {third}, 4, SIGKILL},
        {"a list without a file", {}, {first, odd, third}, 3, SIGKILL},
        {"a list without a file that was stored at the end", {}, {first, odd, third}, 3, SIGTERM},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        startPlayer(one.opened);
        if (!one.appended.empty()) start(one.appended);
        ASSERT_TRUE(reaches("count", one.count));
        ASSERT_TRUE(reaches("state", "playing"));
        const bool isBefore = status().value("index") == 1;
        start(isBefore ? std::vector<std::string>{"--next"}
                       : std::vector<std::string>{"--previous", "--previous"});
        ASSERT_TRUE(plays(880));
        start({"--volume=30"});
        desk.key("ctrl+2");
        for (int i = 0; i < 3; ++i)
            desk.key("shift+Right");
        ASSERT_TRUE(Desk::until([] { return status().value("position").toDouble() > 10; }));
        support::run({"sh", "-c", "xdotool getactivewindow windowmove 333 77"});
        ASSERT_TRUE(Desk::until([] { return windowPlace() == QPoint(333, 77); }));
        if (one.signal == SIGKILL) {
            start({"--play-pause"});
            ASSERT_TRUE(Desk::until([] {
                const QJsonValue session = stored()["session"];
                return session["position"].toDouble() > 10 && session["place"][0] == 333 &&
                       session["page"] == 1;
            }));
        }
        end(one.signal);

        const std::size_t silentFrom = desk.recordedFrames();
        startPlayer();
        EXPECT_TRUE(reaches("state", "paused"));
        const QJsonObject now = status();
        EXPECT_EQ(now["index"], 2);
        EXPECT_EQ(now["count"], one.count);
        EXPECT_EQ(now["volume"], 30);
        EXPECT_GT(now["position"].toDouble(), 10);
        EXPECT_EQ(windowPlace(), QPoint(333, 77));
        desk.key("ctrl+z");
        EXPECT_EQ(status()["count"], one.count) << "the empty list before it is nothing to go back to";
        EXPECT_TRUE(Desk::until([] { return !fs::exists(stateFile("session.restoring")); }));
        EXPECT_EQ(stored()["session"].toObject()["page"], 1);
        EXPECT_TRUE(
            std::ranges::all_of(desk.loudness(silentFrom), [](double level) { return level < 0.001; }));
        desk.key("space");
        ASSERT_TRUE(plays(880));
        EXPECT_GT(status()["position"].toDouble(), 10);
        end(SIGTERM);
        fs::remove_all(stateFile(""));
    }
}

TEST_F(SessionTest, WhatIsNamedAtTheStartComesBehindIt) {
    setRestores(true);
    const auto list = (support::scratch() / "List.m3u").string();
    support::writeFile(list, third + "\n");
    startPlayer({QString::fromStdString(first)});
    ASSERT_TRUE(plays(440));
    ASSERT_TRUE(reaches("length", 60));
    end(SIGTERM);
    startPlayer({QString::fromStdString(list)});
    EXPECT_TRUE(plays(1500));
    EXPECT_EQ(status()["count"], 2);
    EXPECT_EQ(status()["index"], 2);
    end(SIGTERM);

    const starts::Started own({"--play-pause"});
    EXPECT_TRUE(reaches("state", "playing")) << "where none runs, one starts and plays";
    EXPECT_TRUE(plays(1500));
    EXPECT_EQ(start({"--volume=20", "--stop"}).status, 0);
    ASSERT_TRUE(Desk::until([] { return stored()["volume"].toDouble() < 0.21; }));
    own.signal(SIGTERM);
    EXPECT_EQ(own.answer().status, 0);

    setRestores(false);
    startPlayer();
    EXPECT_EQ(status()["volume"], 20);
    EXPECT_EQ(status()["count"], 0);
    EXPECT_TRUE(Desk::until([] { return !stored().contains("session"); }))
        << "nothing is kept against the wish";
}

TEST_F(SessionTest, AnAddressIsOpenedWhenItIsPlayed) {
    setRestores(true);
    const std::string content = support::readFile(third);
    support::HttpServer server([&](auto& client) { support::HttpServer::sendFile(client, content); });
    startPlayer({QString::fromStdString(server.url("/a.wav"))});
    ASSERT_TRUE(plays(1500));
    ASSERT_TRUE(reaches("length", 60));
    for (int i = 0; i < 4; ++i)
        desk.key("shift+Right");
    ASSERT_TRUE(Desk::until([] { return status()["position"].toDouble() > 20; }));
    end(SIGTERM);
    const int requests = server.requestCount();
    startPlayer();
    ASSERT_TRUE(reaches("count", 1));
    EXPECT_TRUE(Desk::until([] { return !fs::exists(stateFile("session.restoring")); }));
    EXPECT_EQ(server.requestCount(), requests);
    end(SIGTERM); // the place outlives a run in which it was not played
    startPlayer();
    ASSERT_TRUE(reaches("count", 1));
    desk.key("space");
    EXPECT_TRUE(plays(1500));
    EXPECT_GT(status()["position"].toDouble(), 20);
}

TEST_F(SessionTest, WhatCrashedTheRestoreIsNotRestoredAgain) {
    setRestores(true);
    startPlayer({QString::fromStdString(first), QString::fromStdString(third)});
    ASSERT_TRUE(plays(440));
    ASSERT_TRUE(reaches("count", 2));
    end(SIGTERM);
    fs::remove(first);
    ASSERT_EQ(mkfifo(first.c_str(), 0600), 0); // opening it takes for ever
    startPlayer();
    ASSERT_TRUE(reaches("count", 2));
    ASSERT_TRUE(fs::exists(stateFile("session.restoring")));
    end(SIGKILL);

    startPlayer();
    EXPECT_TRUE(Desk::until([] { return !fs::exists(stateFile("session.restoring")); }));
    EXPECT_EQ(status()["count"], 0);
    start({third});
    EXPECT_TRUE(plays(1500));
    end(SIGTERM);
    startPlayer();
    EXPECT_TRUE(reaches("state", "paused")) << "the one after that comes back";
    EXPECT_EQ(status()["count"], 1);
}

} // namespace
