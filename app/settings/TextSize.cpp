#include "app/settings/TextSize.h"

#include "app/WindowSize.h"
#include "app/settings/Settings.h"
#include "platform/cocoa/Scale.h"
#include "platform/cocoa/UserDefaults.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace app {
namespace {

constexpr int sizeStep = 25;

/// In percent.
const QString desktopScaleKey = QStringLiteral("DesktopTextSize");

const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalSettings = QStringLiteral("org.freedesktop.portal.Settings");
const QString desktopGroup = QStringLiteral("org.gnome.desktop.interface");
const QString desktopKey = QStringLiteral("text-scaling-factor");

/// How large the window may be shown; 1 on a screen that is smaller than its design.
double maxScaleOnScreen() {
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (!screen) return 1.0;
    const QSizeF room = screen->availableSize();
    const QSizeF least = WindowSize::minDesignSize();
    return std::max(1.0, std::min(room.width() / least.width(), room.height() / least.height()));
}

/// The portal answers with a variant in a variant.
double numberIn(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toDouble();
}

} // namespace

TextSize::TextSize(Settings& settings) : m_settings(settings) {
    auto& defaults = cocoa::UserDefaults::standardUserDefaults();
    defaults.registerDefaults({{desktopScaleKey, 100}});
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        m_desktopScale = defaults.integerForKey(desktopScaleKey) / 100.0;
    connect(&settings, &Settings::changed, this, &TextSize::apply);
    apply();
}

void TextSize::askDesktop() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!QGuiApplication::platformName().startsWith(QLatin1String("wayland")) || !bus.isConnected()) return;
    bus.connect(portal, portalPath, portalSettings, QStringLiteral("SettingChanged"), this,
                SLOT(desktopSettingChanged(QString, QString, QDBusVariant)));
    QDBusMessage call =
        QDBusMessage::createMethodCall(portal, portalPath, portalSettings, QStringLiteral("Read"));
    call << desktopGroup << desktopKey;
    auto* const watcher = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(call), this).release();
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        answered(*finished);
    });
}

void TextSize::answered(const QDBusPendingCallWatcher& call) {
    const QDBusPendingReply<QDBusVariant> reply = call;
    if (!reply.isError()) setDesktopScale(numberIn(QVariant::fromValue(reply.value())));
}

void TextSize::desktopSettingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group == desktopGroup && key == desktopKey) setDesktopScale(numberIn(QVariant::fromValue(value)));
}

void TextSize::setDesktopScale(double scale) {
    if (!(scale > 0) || scale == m_desktopScale) return;
    m_desktopScale = scale;
    cocoa::UserDefaults::standardUserDefaults().setObject(qRound(scale * 100), desktopScaleKey);
    apply();
}

void TextSize::changeBySteps(int steps) {
    const int wanted = (m_settings.textSize() / sizeStep + steps) * sizeStep;
    m_settings.setTextSize(std::clamp(wanted, Settings::minTextSize, Settings::maxTextSize));
}

void TextSize::apply() {
    const double wanted = m_settings.textSize() / 100.0 * m_desktopScale;
    const double most = std::min(Settings::maxTextSize / 100.0, maxScaleOnScreen());
    cocoa::Scale::shared().setFactor(std::clamp(wanted, 1.0, most));
}

} // namespace app
