#include "app/CommandLine.h"
#include "app/DemoRun.h"
#include "app/FenAppDelegate.h"
#include "app/ProcessEnd.h"
#include "app/desktop/SingleInstance.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/Bundle.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

constexpr int failed = 1;
constexpr int wrongArguments = 2;

[[noreturn]] void leave(int status, const char* error = nullptr) {
    if (error) std::fprintf(stderr, "tulplayer: %s\n", error);
    std::fflush(stdout);
    std::_Exit(status); // what talked to the bus has nothing to tidy up
}

/// Ends the process where the arguments ask for no window.
void obeyOrLeave(const app::CommandLine& line) {
    if (!line.error.empty()) {
        std::fprintf(stderr, "tulplayer: %s\nTry 'tulplayer --help'.\n", line.error.c_str());
        leave(wrongArguments);
    }
    if (line.showsHelp) {
        std::fputs(app::CommandLine::help(), stdout);
        leave(0);
    }
    if (line.showsVersion) {
        std::printf("tulplayer %s\n", qUtf8Printable(cocoa::Bundle::shortVersionString()));
        leave(0);
    }
}

using Start = app::SingleInstance::Start;

/// Returns only where a window is to be shown.
Start startOrLeave(app::SingleInstance& instance, const app::CommandLine& line) {
    const Start start = instance.start(line);
    switch (start) {
    case Start::primary:
    case Start::withoutBus:
    case Start::another:
        return start;
    case Start::handedOver:
        leave(0);
    case Start::noAnswer:
        leave(failed, "the running player does not answer");
    case Start::notRunning:
        break;
    }
    leave(failed, "no player is running");
}

} // namespace

int main(int argc, char** argv) {
    const auto line = app::CommandLine::parse({argv + 1, argv + argc});
    obeyOrLeave(line);
    app::SingleInstance instance;
    const Start start = startOrLeave(instance, line);

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tulplayer"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tulplayer"));
    QApplication::setDesktopFileName(QStringLiteral("org.tulplayer.Tulplayer"));

    FenAppDelegate delegate;
    const app::QuitSignals quitSignals([&] { delegate.quit(); });
    const auto end = [&](int status) {
        delegate.finishSaving(); // a slow disk may take longer than all else has to end
        app::endProcess(status, [&] { delegate.shutDown(); });
    };
    app::callAtExit(end);
    delegate.applicationDidFinishLaunching(start == Start::primary || start == Start::withoutBus);
    // By the event loop: a request to quit that comes meanwhile is to find it running.
    const auto openWhatWasNamed = [&] {
        delegate.openSources(line.sources);
        if (!line.controls.empty()) delegate.playRestored();
    };
    QMetaObject::invokeMethod(&application, openWhatWasNamed, Qt::QueuedConnection);
    instance.serve(delegate);
    std::optional<app::DemoRun> demo;
    if (!line.demoScreenshot.empty()) demo.emplace(delegate, QString::fromStdString(line.demoScreenshot));
    end(QApplication::exec());
}
