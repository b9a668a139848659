#include "app/CommandLine.h"
#include "app/DemoRun.h"
#include "app/FenAppDelegate.h"

#include <QApplication>

#include <optional>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tulplayer"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tulplayer"));
    QApplication::setDesktopFileName(QStringLiteral("tulplayer"));

    FenAppDelegate delegate;
    delegate.applicationDidFinishLaunching();
    const auto line = app::CommandLine::parse(QApplication::arguments());
    delegate.openSources(line.sources);
    std::optional<app::DemoRun> demo;
    if (!line.demoScreenshot.isEmpty()) demo.emplace(delegate, line.demoScreenshot);
    return QApplication::exec();
}
