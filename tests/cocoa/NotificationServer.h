#pragma once

#include <QDBusArgument>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <vector>

/// What a notification server was given.
struct Received {
    QString application;
    uint replaces;
    QString title;
    QString body;
    QVariantMap hints;
};

class NotificationServer : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    std::vector<Received> received;

public slots: // NOLINT(readability-redundant-access-specifiers): what the bus may call
    uint Notify(const QString& application, uint replaces, const QString& /*icon*/, const QString& title,
                const QString& body, const QStringList& /*actions*/, const QVariantMap& hints,
                int /*timeout*/) {
        received.push_back({application, replaces, title, body, hints});
        return replaces != 0 ? replaces : ++m_last;
    }

private:
    uint m_last = 40;
};
