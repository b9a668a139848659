#include "app/desktop/Mpris.h"

#include <QCoreApplication>
#include <QDBusConnection>

namespace app {

Mpris::Mpris(FenAppDelegate& delegate) : m_root(*this, delegate), m_player(*this, delegate) {}

void Mpris::update() {
    if (m_state == State::untried) m_state = appear() ? State::there : State::impossible;
    if (m_state == State::there) m_player.announceChanges();
}

bool Mpris::appear() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    if (!bus.registerObject(MprisPlayer::path, this, QDBusConnection::ExportAdaptors)) return false;
    const QString name = QStringLiteral("org.mpris.MediaPlayer2.tulplayer");
    return bus.registerService(name) ||
           bus.registerService(name + QStringLiteral(".instance%1").arg(QCoreApplication::applicationPid()));
}

} // namespace app
