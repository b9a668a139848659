#pragma once

#include <QDBusContext>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QVariantMap>

#include <fcntl.h>
#include <unistd.h>

/// Services that keep a machine awake, as far as a player asks them.

class PortalRequest : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Request")
public:
    const QString path = QStringLiteral("/org/freedesktop/portal/desktop/request/1_1/t");
    bool* held = nullptr;

public slots: // NOLINT(readability-redundant-access-specifiers): what the bus may call
    void Close() { *held = false; }
};

class Portal : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Inhibit")
public:
    explicit Portal(PortalRequest& request) : m_request(request) { request.held = &isHeld; }
    bool isHeld = false;
    bool refuses = false;
    uint flags = 0;
    int calls = 0;

public slots: // NOLINT(readability-redundant-access-specifiers): what the bus may call
    QDBusObjectPath Inhibit(const QString& /*window*/, uint flag, const QVariantMap& /*options*/) {
        ++calls;
        if (refuses) {
            sendErrorReply(QDBusError::UnknownInterface);
            return {};
        }
        flags = flag;
        isHeld = true;
        return QDBusObjectPath(m_request.path);
    }

private:
    PortalRequest& m_request;
};

class PowerManagement : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.PowerManagement.Inhibit")
public:
    bool isHeld = false;

public slots: // NOLINT(readability-redundant-access-specifiers): what the bus may call
    uint Inhibit(const QString& /*application*/, const QString& /*reason*/) {
        isHeld = true;
        return 7;
    }
    void UnInhibit(uint cookie) { isHeld = isHeld && cookie != 7; }
};

class Logind : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")
public:
    ~Logind() override { close(m_lock); }
    QString asked;
    /// Whether anybody has the other end open.
    bool isHeld() const {
        char byte = 0;
        return m_lock >= 0 && read(m_lock, &byte, 1) < 0;
    }

public slots: // NOLINT(readability-redundant-access-specifiers): what the bus may call
    QDBusUnixFileDescriptor Inhibit(const QString& what, const QString& who, const QString& why,
                                    const QString& mode) {
        asked = QStringList{what, who, why, mode}.join(' ');
        int ends[2];
        if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return {};
        close(m_lock);
        m_lock = ends[0];
        QDBusUnixFileDescriptor lock;
        lock.giveFileDescriptor(ends[1]);
        return lock;
    }

private:
    int m_lock = -1;
};
