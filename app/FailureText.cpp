#include "app/FailureText.h"

#include "app/DisplayText.h"
#include "core/playlist/resolveEntrySource.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>

namespace app {
namespace {

/// %1 is the host name.
QString sentence(const TulFailure& failure, bool ofAddress) {
    using Kind = TulFailure::Kind;
    switch (failure.kind) {
    case Kind::none:
        break;
    case Kind::notOpened:
        return QStringLiteral("Cannot be opened");
    case Kind::notFound:
        return QStringLiteral("File not found");
    case Kind::unreadable:
        return QStringLiteral("The file cannot be read");
    case Kind::noAudio:
        return ofAddress ? QStringLiteral("No audio at %1") : QStringLiteral("Not an audio file");
    case Kind::nameNotFound:
        return QStringLiteral("%1 was not found");
    case Kind::refused:
        return QStringLiteral("No connection to %1");
    case Kind::timeout:
        return QStringLiteral("No answer from %1");
    case Kind::httpStatus:
        return QStringLiteral("The server answered ") + QString::number(failure.httpStatus);
    case Kind::certificate:
        return QStringLiteral("The certificate of %1 is not trusted");
    case Kind::lost:
        return ofAddress ? QStringLiteral("The connection to %1 was lost")
                         : QStringLiteral("The file could not be read to its end");
    }
    return {};
}

/// %1 is the file's name.
QString sentence(FileStatus status) {
    switch (status) {
    case FileStatus::done:
        break;
    case FileStatus::cut:
        return QStringLiteral("%1 is too long: the rest was left out");
    case FileStatus::incomplete:
        return QStringLiteral("%1 could not be read to its end");
    case FileStatus::postponed:
        return QStringLiteral("%1 will be complete after the next start");
    case FileStatus::notFound:
        return QStringLiteral("%1 was not found");
    case FileStatus::notAllowed:
        return QStringLiteral("No permission for %1");
    case FileStatus::noSpace:
        return QStringLiteral("The disk has no room for %1");
    case FileStatus::failed:
        return QStringLiteral("The disk failed with %1");
    case FileStatus::tooLarge:
        return QStringLiteral("%1 is too large");
    case FileStatus::malformed:
        return QStringLiteral("%1 is not a playlist");
    case FileStatus::busy:
        return QStringLiteral("Another program is using %1");
    }
    return {};
}

QString serverOf(const std::string& source) {
    const QString host = QUrl(displayText(source).value_or(QString()).trimmed()).host();
    return host.isEmpty() ? QStringLiteral("the server") : host;
}

} // namespace

QString failureText(const TulFailure& failure, const std::string& source) {
    const QString text = sentence(failure, isAddress(source));
    return text.contains(QLatin1String("%1")) ? text.arg(serverOf(source)) : text;
}

QString fileStatusText(FileStatus status, const std::string& path) {
    QString text = sentence(status);
    if (text.isEmpty()) return text;
    const QString name = QFileInfo(QFile::decodeName(path.c_str())).fileName();
    return text.arg(path.empty() ? QStringLiteral("unsaved changes") : name);
}

} // namespace app
