// Several starts of the real program in one session: what each hands over, controls, prints and returns.

#include "app/CommandLine.h"
#include "tests/app/Starts.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

namespace {

using starts::Answer;
using starts::reaches;
using starts::start;
using starts::Started;
using starts::status;
using starts::track;
using support::Desk;
namespace fs = std::filesystem;

class InstanceTest : public testing::Test {
protected:
    void startPlayer(const QStringList& arguments = {}) { desk.start(QStringLiteral(TUL_PLAYER), arguments); }
    bool plays(double hertz) {
        return Desk::until([&] { return desk.plays(hertz); });
    }
    Desk desk;
};

TEST_F(InstanceTest, AnotherStartHandsOverWhatItWasStartedWith) {
    startPlayer({QString::fromStdString(track("First.wav", 440))});
    ASSERT_TRUE(plays(440));

    const fs::path folder = support::scratch() / "Caf\xe9 %41 #1?";
    fs::create_directories(folder / "sub");
    const std::string second = track("Second.wav", 880);
    fs::rename(second, folder / "Zweite\xff.wav");
    const std::string third = track("Third.wav", 1500);
    support::writeFile(folder / "List.m3u", third + "\n");
    Answer answer = start({"./Zweite\xff.wav", "", "--", "sub/../List.m3u"}, folder);
    EXPECT_EQ(answer.status, 0) << answer.err;
    EXPECT_TRUE(plays(880)) << "the first of them plays, whatever plays";
    EXPECT_TRUE(reaches("count", 3));
    EXPECT_EQ(status().value("index"), 2);

    answer = start({"List.m3u"}, folder);
    EXPECT_TRUE(plays(1500)) << "a playlist is appended, too";
    EXPECT_EQ(status().value("count"), 4);
    desk.key("ctrl+z");
    EXPECT_TRUE(reaches("count", 3));

    desk.turnAway();
    EXPECT_EQ(start({}).status, 0);
    EXPECT_TRUE(Desk::until([&] { return desk.activeWindow() == QLatin1String("Tulplayer"); }));

    desk.key("ctrl+u");
    ASSERT_TRUE(Desk::until([&] { return desk.activeWindow().startsWith(QLatin1String("Stream address")); }));
    EXPECT_EQ(start({third}).status, 0);
    EXPECT_EQ(status().value("count"), 3) << "a prompt takes no commands";
    desk.key("Escape");
    EXPECT_TRUE(reaches("count", 4));

    QElapsedTimer timer;
    timer.start();
    desk.signal(SIGSTOP);
    answer = start({third});
    EXPECT_LT(timer.elapsed(), 10000);
    EXPECT_EQ(answer.status, 1);
    EXPECT_NE(answer.err.find("does not answer"), std::string::npos) << answer.err;
    desk.signal(SIGCONT);
    EXPECT_TRUE(reaches("count", 5)) << "what it was sent comes all the same";

    desk.signal(SIGSTOP);
    const Started successor({third});
    desk.signal(SIGKILL);
    EXPECT_TRUE(reaches("count", 1)) << "what the killed player did not take starts one";
    EXPECT_FALSE(successor.ended());
}

TEST_F(InstanceTest, OfManyStartsAtOnceOneStays) {
    std::vector<std::unique_ptr<Started>> all;
    for (int i = 0; i < 6; ++i)
        all.push_back(std::make_unique<Started>(
            std::vector{track("At once " + std::to_string(i) + ".wav", 440 + 100 * i)}));
    EXPECT_TRUE(reaches("count", 6)) << "nothing is lost";
    const auto running = [&] {
        return std::ranges::count_if(all, [](const auto& one) { return !one->ended(); });
    };
    EXPECT_TRUE(Desk::until([&] { return running() == 1; }));
    for (const auto& one : all)
        if (one->ended()) {
            EXPECT_EQ(one->answer().status, 0) << one->answer().err;
        }
}

TEST_F(InstanceTest, OptionsControlTheRunningPlayer) {
    for (const char* option : {"--next", "--previous", "--stop", "--volume=3", "--status"}) {
        const Answer answer = start({option});
        EXPECT_EQ(answer.status, 1) << option;
        EXPECT_EQ(answer.err, "tulplayer: no player is running\n");
        EXPECT_EQ(answer.out, "");
    }
    startPlayer({"--new-window", QString::fromStdString(track("A\x1b]0;b.wav", 440)),
                 QString::fromStdString(track("Second.wav", 880))});
    ASSERT_TRUE(plays(440));
    EXPECT_TRUE(reaches("state", "playing"));
    const Answer line = start({"--status"});
    EXPECT_EQ(line.out.find_first_of("\x1b\a"), std::string::npos) << "a terminal is not to obey a title";
    EXPECT_EQ(line.out.substr(0, 12), "playing | A ");
    EXPECT_EQ(start({"--next", "--volume", "-20"}).status, 0);
    EXPECT_TRUE(plays(880));
    EXPECT_TRUE(reaches("volume", 30));
    start({"--volume", "+90"});
    EXPECT_TRUE(reaches("volume", 100));
    start({"--play-pause"});
    EXPECT_TRUE(reaches("state", "paused"));
    start({"--play-pause"});
    EXPECT_TRUE(reaches("state", "playing"));
    start({"--stop"});
    EXPECT_TRUE(reaches("state", "stopped"));
    start({"--previous", "--status"});
    EXPECT_TRUE(plays(440));
    EXPECT_EQ(status().value("index"), 1);
    EXPECT_EQ(status().value("count"), 2);
    EXPECT_NEAR(status().value("length").toDouble(), 60, 0.01);

    // The session's own player comes beside it, and is the one that is controlled from then on.
    const Started own({track("Third.wav", 1500), "/nowhere.wav"});
    EXPECT_TRUE(reaches("title", "Third"));
    start({"--next"});
    EXPECT_TRUE(reaches("state", "failed"));
    EXPECT_TRUE(desk.plays(440)) << "the other one is left alone";
}

TEST_F(InstanceTest, WithoutABusItStartsAsEver) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
    startPlayer({QString::fromStdString(track("Alone.wav", 440))});
    EXPECT_TRUE(plays(440));
    EXPECT_EQ(start({"--next"}).status, 1);
}

TEST(CommandLineTest, TellsFilesFromOptions) {
    using app::CommandLine;
    struct Case {
        std::vector<std::string> arguments;
        std::vector<std::string> sources;
        const char* error;
    };
    const std::string here = fs::current_path().string();
    const std::initializer_list<Case> cases{
        {{"a.wav", "/b/../c.wav", "http://d/e", "file:///f%20g"},
         {here + "/a.wav", "/c.wav", "http://d/e", "/f g"},
         ""},
        {{"--", "--next", "-x", "--"}, {here + "/--next", here + "/-x", here + "/--"}, ""},
        {{"-platform", "offscreen", "--style=fusion", "a"}, {here + "/a"}, ""},
        {{"--nxt"}, {}, "unknown option --nxt"},
        {{"-x"}, {}, "unknown option -x"},
        {{"--next=3"}, {}, "--next takes no value"},
        {{"--demo"}, {}, "--demo needs a value"},
        {{"--volume"}, {}, "--volume needs a value"},
        {{"--volume", "101"}, {}, "--volume takes 0 to 100, or a difference like +5 or -5"},
        {{"--volume", "5x"}, {}, "--volume takes 0 to 100, or a difference like +5 or -5"},
        {{"--volume="}, {}, "--volume takes 0 to 100, or a difference like +5 or -5"},
        {{"--volume", "+-5"}, {}, "--volume takes 0 to 100, or a difference like +5 or -5"},
        {{"--status=xml"}, {}, "--status takes no value but json"},
        {{"--json"}, {}, "--json goes with --status"},
    };
    for (const Case& one : cases) {
        const CommandLine line = CommandLine::parse(one.arguments);
        EXPECT_EQ(line.error, one.error);
        if (line.error.empty()) {
            EXPECT_EQ(line.sources, one.sources);
        }
    }
    EXPECT_NE(CommandLine::parse({"--next", "a.wav"}).error, "");
    EXPECT_EQ(CommandLine::parse({"--json", "--status"}).status, CommandLine::Status::json);
    EXPECT_EQ(start({"--nxt"}).status, 2);
    EXPECT_EQ(start({"--version"}).out, "tulplayer " TUL_VERSION "\n");
}

} // namespace
