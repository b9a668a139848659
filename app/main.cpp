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
    const auto line = app::CommandLine::parse({argv + 1, argv + argc});
    delegate.openSources(line.sources);
    std::optional<app::DemoRun> demo;
    if (!line.demoScreenshot.empty()) demo.emplace(delegate, QString::fromStdString(line.demoScreenshot));
    return QApplication::exec();
}
