#include "platform/cocoa/UserDefaults.h"

#include "platform/cocoa/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>
#include <QStandardPaths>

namespace cocoa {
namespace {

constexpr qint64 maxBytes = 1 << 20;

} // namespace

UserDefaults& UserDefaults::standardUserDefaults() {
    static UserDefaults defaults(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                                 QLatin1String("/tulplayer/settings.json"));
    return defaults;
}

UserDefaults::UserDefaults(const QString& path) : m_path(path) {
    m_stored = read().value_or(QJsonObject());
}

std::optional<QJsonObject> UserDefaults::read() const {
    QFile file(m_path);
    if (!file.exists()) return QJsonObject();
    QJsonParseError error{.offset = 0, .error = QJsonParseError::NoError};
    const bool opened = file.open(QIODevice::ReadOnly) && file.size() <= maxBytes;
    const QJsonDocument document = opened ? QJsonDocument::fromJson(file.readAll(), &error) : QJsonDocument();
    if (document.isObject()) return document.object();
    log(m_path + QLatin1String(": ") +
        (error.error == QJsonParseError::NoError ? QLatin1String("no settings") : error.errorString()));
    return std::nullopt;
}

void UserDefaults::registerDefaults(const QJsonObject& defaults) {
    for (auto each = defaults.begin(); each != defaults.end(); ++each)
        m_registered[each.key()] = each.value();
}

QJsonValue UserDefaults::valueForKey(const QString& key, QJsonValue::Type type) const {
    const QJsonValue stored = m_stored.value(key);
    return stored.type() == type ? stored : m_registered.value(key);
}

QString UserDefaults::stringForKey(const QString& key) const {
    return valueForKey(key, QJsonValue::String).toString(QString());
}

bool UserDefaults::boolForKey(const QString& key) const {
    return valueForKey(key, QJsonValue::Bool).toBool();
}

int UserDefaults::integerForKey(const QString& key) const {
    return valueForKey(key, QJsonValue::Double).toInt();
}

bool UserDefaults::setObject(const QJsonValue& value, const QString& key) {
    m_stored[key] = value;
    std::optional<QJsonObject> current = read();
    if (!current) return false;
    (*current)[key] = value;
    QDir().mkpath(QFileInfo(m_path).path());
    QSaveFile file(m_path);
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(*current).toJson()) >= 0 &&
           file.commit();
}

} // namespace cocoa
