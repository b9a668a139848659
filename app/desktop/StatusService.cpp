#include "app/desktop/StatusService.h"

#include "app/DisplayText.h"
#include "app/FenAppDelegate.h"
#include "core/player/TulPlayer.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>

namespace app {
namespace {

QString stateName(const TulPlayer& player) {
    switch (player.playbackState()) {
    case TulPlaybackState::connecting:
        return QStringLiteral("connecting");
    case TulPlaybackState::playing:
        return QStringLiteral("playing");
    case TulPlaybackState::waiting:
        return QStringLiteral("waiting");
    case TulPlaybackState::paused:
        return QStringLiteral("paused");
    case TulPlaybackState::failed:
        return QStringLiteral("failed");
    case TulPlaybackState::fadingOut:
        if (player.request() == TulPlaybackRequest::pause) return QStringLiteral("paused");
        break;
    case TulPlaybackState::stopped:
        break;
    }
    return QStringLiteral("stopped");
}

/// A stream may send control characters, which a terminal would obey.
QString printable(const QVariant& value) {
    QString text = value.toString();
    std::ranges::replace_if(
        text, [](QChar character) { return !character.isPrint(); }, QChar(' '));
    return text.simplified();
}

} // namespace

QVariantMap StatusService::Status() const {
    QVariantMap status{{QStringLiteral("state"), QStringLiteral("stopped")}};
    if (!m_delegate) return status;
    const TulPlayer& player = *m_delegate->player;
    const TulPlaylist& list = *player.playlist;
    const auto count = static_cast<int>(list.entryCount());
    status[QStringLiteral("state")] = stateName(player);
    status[QStringLiteral("volume")] = qRound(player.volume * 100);
    status[QStringLiteral("index")] = count == 0 ? 0 : list.currentIndex + 1;
    status[QStringLiteral("count")] = count;
    if (!player.stream) return status;
    const TulStream& stream = *player.stream;
    const auto insert = [&](const QString& key, const std::string& bytes) {
        status[key] = displayText(bytes).value_or(QString());
    };
    insert(QStringLiteral("title"), stream.title);
    insert(QStringLiteral("artist"), stream.artist);
    insert(QStringLiteral("album"), stream.album);
    status[QStringLiteral("position")] = std::max(stream.position(), 0.0);
    status[QStringLiteral("length")] = std::max(stream.length(), 0.0);
    return status;
}

QByteArray statusLine(const QVariantMap& status) {
    const auto seconds = [&](const char* key) { return status.value(QLatin1String(key)).toDouble(); };
    const auto text = [&](const char* key) { return printable(status.value(QLatin1String(key))); };
    QStringList parts{text("state")};
    const QString title = text("title");
    if (!title.isEmpty()) {
        const QString artist = text("artist");
        const QString length =
            seconds("length") > 0 ? QStringLiteral("/") + timeText(seconds("length")) : QString();
        parts << (artist.isEmpty() ? title : artist + QStringLiteral(" - ") + title)
              << timeText(seconds("position")) + length;
    }
    parts << QStringLiteral("entry %1 of %2").arg(text("index"), text("count"))
          << QStringLiteral("volume %1 %").arg(text("volume"));
    return parts.join(QStringLiteral(" | ")).toUtf8();
}

QByteArray statusJson(const QVariantMap& status) {
    return QJsonDocument(QJsonObject::fromVariantMap(status)).toJson(QJsonDocument::Compact);
}

} // namespace app
