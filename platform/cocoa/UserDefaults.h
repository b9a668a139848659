#pragma once

#include <QHash>
#include <QJsonObject>
#include <QString>

namespace cocoa {

/// Settings that the user may have stored, over defaults that the program registers. They stand in the JSON
/// object of $XDG_CONFIG_HOME/tulplayer/settings.json ("~/.config" without that variable), which is read once
/// and never written. Main thread only.
class UserDefaults {
public:
    /// Those of the user who runs the program.
    static UserDefaults& standardUserDefaults();

    /// Reads `path`; a file that is missing or no JSON object holds nothing.
    explicit UserDefaults(const QString& path);

    void registerDefaults(const QHash<QString, QString>& defaults);
    /// The stored value; the registered one when nothing or a value of another kind is stored; else a null
    /// string.
    QString stringForKey(const QString& key) const;

private:
    QJsonObject m_stored;
    QHash<QString, QString> m_registered;
};

} // namespace cocoa
