#include "platform/cocoa/UserDefaults.h"

#include "platform/cocoa/Log.h"

#include <QFile>
#include <QJsonDocument>
#include <QStandardPaths>

namespace cocoa {

UserDefaults& UserDefaults::standardUserDefaults() {
    static UserDefaults defaults(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                                 QLatin1String("/tulplayer/settings.json"));
    return defaults;
}

UserDefaults::UserDefaults(const QString& path) {
    constexpr qint64 mostBytes = 1 << 20;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.read(mostBytes), &error);
    if (!document.isObject()) log(path + QLatin1String(": ") + error.errorString());
    m_stored = document.object();
}

void UserDefaults::registerDefaults(const QHash<QString, QString>& defaults) {
    m_registered.insert(defaults);
}

QString UserDefaults::stringForKey(const QString& key) const {
    const QJsonValue stored = m_stored.value(key);
    return stored.isString() ? stored.toString() : m_registered.value(key);
}

} // namespace cocoa
