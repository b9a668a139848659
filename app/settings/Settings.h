#pragma once

#include <QObject>
#include <QString>

namespace cocoa {
class UserDefaults;
}
enum class TulLoudness;

namespace app {

/// What the user has chosen, stored in the user defaults. A stored value that is out of range counts as the
/// nearest in range; one that is unknown, as the default.
///
/// Threads: main thread only; `defaults` must outlive it.
class Settings : public QObject {
    Q_OBJECT
public:
    static constexpr int minTextSize = 100;
    static constexpr int maxTextSize = 200;
    static constexpr int minPort = 1024;
    static constexpr int maxPort = 65535;

    explicit Settings(cocoa::UserDefaults& defaults);

    /// List, track and position return at the next start. Default: no.
    [[nodiscard]] bool restoresSession() const;
    /// A notification at each new track. Default: yes.
    [[nodiscard]] bool showsNotifications() const;
    /// Default: off.
    [[nodiscard]] TulLoudness loudness() const;
    /// What listeners on the network see. Default: "Tulplayer".
    [[nodiscard]] QString sharingName() const;
    /// 1024 to 65535. Default: 9090.
    [[nodiscard]] int sharingPort() const;
    /// In percent of the design's size. Default: 100.
    [[nodiscard]] int textSize() const;
    /// When the sink that the desktop plays to is removed, as by pulling out headphones. Default: yes.
    [[nodiscard]] bool pausesWhenSinkIsRemoved() const;
    /// No idle sleep while something plays. Default: yes.
    [[nodiscard]] bool keepsAwake() const;

    void setRestoresSession(bool restores);
    void setShowsNotifications(bool shows);
    void setLoudness(TulLoudness loudness);
    void setSharingName(const QString& name);
    void setSharingPort(int port);
    void setTextSize(int percent);
    void setPausesWhenSinkIsRemoved(bool pauses);
    void setKeepsAwake(bool keeps);

signals:
    /// After any of them was set.
    void changed();
    /// The value holds, but only until the program ends.
    void cannotBeStored();

private:
    void store(const QString& key, const QJsonValue& value);

    cocoa::UserDefaults& m_defaults;
};

} // namespace app
