#include "app/editing/showInFileManager.h"

#include "app/editing/SourceAddress.h"
#include "core/playlist/resolveEntrySource.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QUrl>

#include <memory>

namespace app {
namespace {

void openFolder(const std::string& path) {
    QDesktopServices::openUrl(QUrl::fromEncoded(addressOf(playlistFolder(path))));
}

} // namespace

void showInFileManager(const std::string& path) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList(QString::fromLatin1(addressOf(path))) << QString();
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return openFolder(path);
    // Deletes itself when the answer has come.
    auto* const watcher = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(call)).release();
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, path] {
        if (watcher->isError()) openFolder(path);
        watcher->deleteLater();
    });
}

} // namespace app
