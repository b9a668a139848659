#pragma once

#include <QByteArray>
#include <QDBusAbstractAdaptor>
#include <QVariantMap>

class FenAppDelegate;

namespace app {

/// What the running player answers to `--status`: `state` (stopped, connecting, playing, waiting, paused or
/// failed), `title`, `artist`, `album`, `position` and `length` in seconds (0 where it is not known),
/// `volume` in percent, `index` of the current entry from 1 (0 in an empty list), and `count`.
///
/// Threads: main thread only.
class StatusService : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.tulplayer.Tulplayer")
public:
    explicit StatusService(QObject& service) : QDBusAbstractAdaptor(&service) {}

    /// The delegate must outlive it.
    void serve(FenAppDelegate& delegate) { m_delegate = &delegate; }

public Q_SLOTS: // what the bus may call
    QVariantMap Status() const;

private:
    FenAppDelegate* m_delegate = nullptr; ///< Null before `serve`: nothing plays.
};

/// A status in one line of UTF-8, without control characters, whatever the texts hold.
QByteArray statusLine(const QVariantMap& status);
/// As a JSON object in one line.
QByteArray statusJson(const QVariantMap& status);

} // namespace app
