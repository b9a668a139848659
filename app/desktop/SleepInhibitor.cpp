#include "app/desktop/SleepInhibitor.h"

#include "core/background/Workers.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QGuiApplication>

#include <array>
#include <memory>
#include <utility>

namespace app {
namespace {

const QString reason = QStringLiteral("Playing audio");

/// Nothing is started for it.
QDBusMessage callOf(const char* service, const char* path, const char* interface, const char* method) {
    QDBusMessage call = QDBusMessage::createMethodCall(QLatin1String(service), QLatin1String(path),
                                                       QLatin1String(interface), QLatin1String(method));
    call.setAutoStartService(false);
    return call;
}

struct Way {
    QDBusConnection (*bus)();
    QDBusMessage (*inhibit)();
    /// Of what `inhibit` was answered; what it holds lives until then.
    std::function<void()> (*release)(const QVariant& answer);
};

constexpr const char* portalService = "org.freedesktop.portal.Desktop";
constexpr uint inhibitsSuspend = 4;

QDBusMessage askPortal() {
    return callOf(portalService, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Inhibit",
                  "Inhibit")
           << QString() << inhibitsSuspend << QVariantMap{{QStringLiteral("reason"), reason}};
}

std::function<void()> portalRelease(const QVariant& answer) {
    return [path = answer.value<QDBusObjectPath>().path().toLatin1()] {
        QDBusConnection::sessionBus().send(
            callOf(portalService, path.constData(), "org.freedesktop.portal.Request", "Close"));
    };
}

constexpr const char* powerManagement = "org.freedesktop.PowerManagement.Inhibit";
constexpr const char* powerManagementPath = "/org/freedesktop/PowerManagement/Inhibit";

QDBusMessage askPowerManagement() {
    return callOf(powerManagement, powerManagementPath, powerManagement, "Inhibit")
           << QGuiApplication::applicationDisplayName() << reason;
}

std::function<void()> powerManagementRelease(const QVariant& answer) {
    return [cookie = answer.toUInt()] {
        QDBusConnection::sessionBus().send(
            callOf(powerManagement, powerManagementPath, powerManagement, "UnInhibit") << cookie);
    };
}

QDBusMessage askLogind() {
    return callOf("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                  "Inhibit")
           << QStringLiteral("idle") << QGuiApplication::applicationDisplayName() << reason
           << QStringLiteral("block");
}

/// The lock is held as long as the descriptor is open.
std::function<void()> logindRelease(const QVariant& answer) {
    return [lock = answer.value<QDBusUnixFileDescriptor>()] {};
}

constexpr std::array<Way, 3> ways{
    {{&QDBusConnection::sessionBus, &askPortal, &portalRelease},
     {&QDBusConnection::sessionBus, &askPowerManagement, &powerManagementRelease},
     {&QDBusConnection::systemBus, &askLogind, &logindRelease}}};

} // namespace

void SleepInhibitor::setInhibits(bool inhibits) {
    m_inhibits = inhibits;
    if (!inhibits) m_isRefused = false;
    follow();
}

void SleepInhibitor::follow() {
    const bool isHeld = static_cast<bool>(m_release);
    if (m_isAsking || m_isRefused || isHeld == m_inhibits) return;
    if (isHeld) return std::exchange(m_release, {})();
    m_isAsking = true;
    ask(0);
}

void SleepInhibitor::ask(std::size_t way) {
    // Connecting to a bus blocks.
    m_workers.run(Workers::Lane::own, [this, way](const Workers::Reply& reply) {
        const auto bus = ways[way].bus();
        reply.post([this, way, bus] {
            const QDBusPendingCall call = bus.asyncCall(ways[way].inhibit());
            auto* const watcher = std::make_unique<QDBusPendingCallWatcher>(call, this).release();
            connect(watcher, &QDBusPendingCallWatcher::finished, this,
                    [this, way](QDBusPendingCallWatcher* finished) {
                        finished->deleteLater();
                        take(way, *finished);
                    });
        });
    });
}

/// Meanwhile playing may have ended.
void SleepInhibitor::take(std::size_t way, const QDBusPendingCall& answer) {
    const QDBusMessage reply = answer.reply();
    const bool isGranted = reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty();
    if (!isGranted && m_inhibits && way + 1 < ways.size()) return ask(way + 1);
    m_isAsking = false;
    m_isRefused = !isGranted && m_inhibits;
    if (isGranted) m_release = ways[way].release(reply.arguments().front());
    follow();
}

} // namespace app
