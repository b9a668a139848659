#include "app/SharingText.h"

#include "core/player/TulNetworkSharing.h"
#include "core/player/TulPlayer.h"

#include <QSysInfo>

namespace app {
namespace {

QString address(std::uint32_t port) {
    return QStringLiteral("http://%1:%2/").arg(QSysInfo::machineHostName()).arg(port);
}

/// Empty when sharing works, or will with the next track.
QString sharingFailure(const TulPlayer& player) {
    const TulNetworkSharing& sharing = *player.networkSharing;
    if (!player.networkSharingEnabled || !player.stream || sharing.port != 0) return {};
    if (sharing.isEncoderMissing) return QStringLiteral("Sharing Needs the Program “oggenc”");
    return QStringLiteral("Cannot Share: Port %1 Is Taken").arg(sharing.wantedPort);
}

} // namespace

QString sharingTitle(const TulPlayer& player) {
    if (QString failure = sharingFailure(player); !failure.isEmpty()) return failure;
    const TulNetworkSharing& sharing = *player.networkSharing;
    if (sharing.port == 0) return QStringLiteral("Share on the Network");
    const QString shared = QStringLiteral("Shared at %1").arg(address(sharing.port));
    const std::uint32_t listeners = sharing.listenerCount();
    return listeners == 0 ? shared : QStringLiteral("%1 (%2 listening)").arg(shared).arg(listeners);
}

QString sharingNotice(const TulPlayer& player) {
    if (QString failure = sharingFailure(player); !failure.isEmpty()) return failure;
    const TulNetworkSharing& sharing = *player.networkSharing;
    if (sharing.port == 0)
        return QStringLiteral("What plays next is shared at %1").arg(address(sharing.wantedPort));
    return QStringLiteral("Others can listen at %1").arg(address(sharing.port));
}

} // namespace app
