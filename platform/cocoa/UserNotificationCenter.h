#pragma once

#include "platform/cocoa/UserNotification.h"

#include <QDBusConnection>
#include <QObject>

#include <optional>

class QDBusPendingCallWatcher;

namespace cocoa {

/// Sends notifications to the desktop (org.freedesktop.Notifications, version 1.2) without blocking. Each
/// replaces the previous one; of those that arrive during a call only the last is sent. Does nothing without
/// a session bus or a notification server. Main thread only.
class UserNotificationCenter : public QObject {
    Q_OBJECT
public:
    /// Connects to the session bus with the first notification.
    static UserNotificationCenter& defaultUserNotificationCenter();

    /// Dropped while the application is the active one.
    void deliverNotification(const UserNotification& notification);

private:
    void send(const UserNotification& notification);
    void sent(const QDBusPendingCallWatcher& call);

    uint m_shown = 0; ///< The server's id of the last notification; 0 for none.
    bool m_sending = false;
    std::optional<UserNotification> m_waiting;
};

} // namespace cocoa
