#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

namespace cocoa {

/// The user's settings, with defaults that the program registers. Stored in the JSON object of
/// $XDG_CONFIG_HOME/tulplayer/settings.json ("~/.config" without that variable), which is read once. Main
/// thread only.
class UserDefaults {
public:
    /// The settings of the current user.
    static UserDefaults& standardUserDefaults();

    /// Reads `path`; a file that is missing or not a JSON object counts as empty.
    explicit UserDefaults(const QString& path);

    void registerDefaults(const QJsonObject& defaults);

    /// The stored value; the registered one when nothing or a value of another kind is stored; else a null
    /// string, false or 0.
    QString stringForKey(const QString& key) const;
    bool boolForKey(const QString& key) const;
    int integerForKey(const QString& key) const;

    /// The value holds from now on. The file is read again and replaced whole, so that what another program
    /// has stored meanwhile stays. False when it could not be written, or is no JSON object: one that the
    /// user has edited is not overwritten because of a missing comma.
    bool setObject(const QJsonValue& value, const QString& key);

private:
    /// None when the file is not a JSON object.
    [[nodiscard]] std::optional<QJsonObject> read() const;
    [[nodiscard]] QJsonValue valueForKey(const QString& key, QJsonValue::Type type) const;

    QString m_path;
    QJsonObject m_stored;
    QJsonObject m_registered;
};

} // namespace cocoa
