#include "app/CommandLine.h"
#include "app/DemoRun.h"
#include "app/FenAppDelegate.h"
#include "app/ProcessEnd.h"

#include <QApplication>

#include <optional>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tulplayer"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tulplayer"));
    QApplication::setDesktopFileName(QStringLiteral("tulplayer"));

    FenAppDelegate delegate;
    const app::QuitSignals quitSignals([&] { delegate.quit(); });
    const auto end = [&](int status) {
        delegate.finishSaving(); // a slow disk may take longer than all else has to end
        app::endProcess(status, [&] { delegate.shutDown(); });
    };
    app::callAtExit(end);
    delegate.applicationDidFinishLaunching();
    const auto line = app::CommandLine::parse({argv + 1, argv + argc});
    // By the event loop: a request to quit that comes meanwhile is to find it running.
    QMetaObject::invokeMethod(
        &application, [&] { delegate.openSources(line.sources); }, Qt::QueuedConnection);
    std::optional<app::DemoRun> demo;
    if (!line.demoScreenshot.empty()) demo.emplace(delegate, QString::fromStdString(line.demoScreenshot));
    end(QApplication::exec());
}
