#pragma once

#include "platform/cocoa/UserNotification.h"

#include <QDBusConnection>
#include <QObject>

#include <optional>

class QDBusPendingCallWatcher;

namespace cocoa {

/// Hands notifications to the desktop (org.freedesktop.Notifications, version 1.2) without ever waiting for
/// it. Each replaces the one before; of several that come while one is being handed over, only the last is
/// shown. Without a session bus or a notification server nothing happens. Main thread only.
class UserNotificationCenter : public QObject {
    Q_OBJECT
public:
    /// The session bus is not touched before the first notification.
    static UserNotificationCenter& defaultUserNotificationCenter();

    /// Dropped while the application is the active one.
    void deliverNotification(const UserNotification& notification);

private:
    void send(const UserNotification& notification);
    void sent(const QDBusPendingCallWatcher& call);

    uint m_shown = 0; ///< The server's number for the last one; 0 for none.
    bool m_sending = false;
    std::optional<UserNotification> m_waiting;
};

} // namespace cocoa
