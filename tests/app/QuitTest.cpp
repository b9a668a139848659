// How the program ends, whatever it does at that moment and whoever asks: soon, and with nothing left behind.

#include "app/ProcessEnd.h"
#include "tests/support/Desk.h"
#include "tests/support/HttpServer.h"
#include "tests/support/Media.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

using support::Desk;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr auto endLimit = 300ms;
constexpr QPoint menuButton{20, 15};
const QString service = QStringLiteral("org.mpris.MediaPlayer2.tulplayer");

fs::path home() {
    return std::getenv("HOME");
}

QString makeTrack() {
    const auto ppm = support::scratch() / "cover.ppm";
    support::writeFile(ppm, "P6\n16 16\n255\n" + std::string(16 * 16 * 3, 'c'));
    const auto png = support::scratch() / "cover.png";
    support::run({"ffmpeg", "-y", "-i", ppm.string(), png.string()});
    const auto wav = support::writeWav(support::scratch() / "raw.wav", support::sine(440, 60 * 44100));
    const auto flac = (support::scratch() / "Track.flac").string();
    support::run({"flac", "-s", "-f", "--picture=" + png.string(), "-o", flac, wav.string()});
    return QString::fromStdString(flac);
}

bool coverIsThere() {
    return std::ranges::any_of(fs::directory_iterator(std::getenv("XDG_RUNTIME_DIR")), [](const auto& file) {
        return file.path().filename().string().starts_with("tulplayer-cover");
    });
}

bool encoderRuns() {
    return std::ranges::any_of(fs::directory_iterator("/proc"), [](const auto& process) {
        std::ifstream name(process.path() / "comm");
        std::string text;
        std::error_code gone;
        return std::getline(name, text) && text == "oggenc" &&
               fs::read_symlink(process.path() / "cwd", gone) == home();
    });
}

class QuitTest : public testing::Test {
public:
    void SetUp() override {
        // The encoder of sharing is looked for in the working directory.
        fs::create_symlink("/usr/bin/oggenc", home() / "oggenc");
        fs::current_path(home());
    }
    void play(const QString& source) {
        desk.start(QStringLiteral(TUL_PLAYER), {source});
        ASSERT_TRUE(Desk::until(
            [] { return QDBusConnection::sessionBus().interface()->isServiceRegistered(service).value(); }));
    }
    void playTrack() {
        play(track);
        ASSERT_TRUE(Desk::until([&] { return desk.plays(440) && coverIsThere(); }));
    }

    void playing() { playTrack(); }
    void paused() {
        playTrack();
        desk.key("space");
        ASSERT_TRUE(Desk::until([&] { return desk.loudness(desk.recordedFrames() - 4410).back() < 0.001; }));
    }
    void frozenServer() {
        playTrack();
        desk.freezeSound(true);
    }
    void sharing() {
        playTrack();
        desk.click(menuButton);
        for (int i = 0; i < 4; ++i) // from below: "Share on the Network"
            desk.key("Up");
        desk.key("Return");
        ASSERT_TRUE(Desk::until(&encoderRuns));
    }
    void connecting() {
        play(QString::fromStdString(silent.url()));
        ASSERT_TRUE(Desk::until([&] { return silent.requestCount() > requests; }));
        requests = silent.requestCount();
    }
    void underAPrompt() {
        playTrack();
        desk.key("ctrl+l");
        ASSERT_TRUE(
            Desk::until([&] { return desk.activeWindow().startsWith(QLatin1String("Open a playlist")); }));
    }

    Desk desk;
    const QString track = makeTrack();
    support::HttpServer silent{[](auto& client) { client.stall(); }};
    int requests = 0;
};

TEST_F(QuitTest, EndsSoonAndLeavesNothing) {
    struct State {
        const char* name;
        void (QuitTest::*enter)();
    };
    struct Way {
        const char* name;
        std::function<void(Desk&)> ask;
    };
    const std::initializer_list<State> states{
        {"playing", &QuitTest::playing},
        {"paused", &QuitTest::paused},
        {"a sound server that does not answer", &QuitTest::frozenServer},
        {"sharing", &QuitTest::sharing},
        {"connecting", &QuitTest::connecting},
        {"under a prompt", &QuitTest::underAPrompt},
    };
    const std::initializer_list<Way> ways{
        {"SIGTERM", [](Desk& desk) { desk.signal(SIGTERM); }},
        {"SIGINT", [](Desk& desk) { desk.signal(SIGINT); }},
        {"Quit over D-Bus",
         [](Desk&) {
             QDBusConnection::sessionBus().send(QDBusMessage::createMethodCall(
                 service, "/org/mpris/MediaPlayer2", "org.mpris.MediaPlayer2", "Quit"));
         }},
    };
    for (const State& state : states)
        for (const Way& way : ways) {
            SCOPED_TRACE(std::string(state.name) + ", " + way.name);
            (this->*state.enter)();
            if (HasFatalFailure()) return;
            way.ask(desk);
            EXPECT_TRUE(desk.endsWithin(endLimit));
            EXPECT_FALSE(coverIsThere());
            EXPECT_FALSE(encoderRuns());
            desk.freezeSound(false);
        }
}

TEST(ProcessEnd, EndsThoughSomethingHangs) {
    EXPECT_EXIT(app::endProcess(3, [] { pause(); }), testing::ExitedWithCode(3), "");
}

TEST(ProcessEnd, ASecondSignalEndsTheProcessAtOnce) {
    const auto askTwice = [] {
        const app::QuitSignals quitSignals([] {});
        raise(SIGINT);
        raise(SIGTERM);
    };
    EXPECT_EXIT(askTwice(), testing::KilledBySignal(SIGTERM), "");
}

} // namespace
