#include "app/desktop/Mpris.h"

#include <QCoreApplication>
#include <QDBusConnection>

#include <chrono>

namespace app {
namespace {

using namespace std::chrono_literals;

constexpr auto lookInterval = 500ms;

} // namespace

Mpris::Mpris(FenAppDelegate& delegate) : m_root(*this, delegate), m_player(*this, delegate) {
    connect(&m_looking, &QTimer::timeout, this, &Mpris::look);
    m_looking.start(lookInterval);
}

void Mpris::look() {
    if (m_state == State::untried) m_state = appear() ? State::there : State::impossible;
    if (m_state == State::impossible) return m_looking.stop();
    m_player.announceChanges();
    m_player.openWaiting();
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
