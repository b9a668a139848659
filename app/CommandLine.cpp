#include "app/CommandLine.h"

#include <QDir>
#include <QUrl>

namespace app {
namespace {

QString absoluteSource(const QString& argument) {
    if (argument.startsWith(QLatin1String("file://"))) return QUrl(argument).toLocalFile();
    if (argument.contains(QLatin1String("://"))) return argument;
    return QDir::cleanPath(QDir::current().absoluteFilePath(argument));
}

} // namespace

CommandLine CommandLine::parse(const QStringList& arguments) {
    CommandLine line;
    bool optionsEnded = false;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (!optionsEnded && argument == QLatin1String("--")) {
            optionsEnded = true;
        } else if (!optionsEnded && argument == QLatin1String("--demo") && i + 1 < arguments.size()) {
            line.demoScreenshot = arguments[++i];
        } else {
            line.sources << absoluteSource(argument);
        }
    }
    return line;
}

} // namespace app
