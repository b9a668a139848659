#pragma once

#include <QString>
#include <QStringList>

namespace app {

/// What the program was started with.
struct CommandLine {
    /// Absolute paths and addresses, in order: playlists are opened, everything else is appended.
    QStringList sources;
    /// Where the demonstration run leaves its screenshot; empty for an ordinary start.
    QString demoScreenshot;

    /// Relative paths are taken from the working directory; `file:` addresses become paths.
    static CommandLine parse(const QStringList& arguments);
};

} // namespace app
