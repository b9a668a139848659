#include "app/FailureText.h"

#include "app/DisplayText.h"
#include "core/playlist/resolveEntrySource.h"

#include <QUrl>

namespace app {
namespace {

/// %1 is the server's name.
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

QString serverOf(const std::string& source) {
    const QString host = QUrl(displayText(source).value_or(QString()).trimmed()).host();
    return host.isEmpty() ? QStringLiteral("the server") : host;
}

} // namespace

QString failureText(const TulFailure& failure, const std::string& source) {
    const QString text = sentence(failure, isAddress(source));
    return text.contains(QLatin1String("%1")) ? text.arg(serverOf(source)) : text;
}

} // namespace app
