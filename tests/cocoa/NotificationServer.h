#pragma once

#include <QDBusArgument>
#include <QImage>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <vector>

/// The calls that a notification server has received.
struct Received {
    QString application;
    uint replaces;
    QString title;
    QString body;
    QVariantMap hints;

    /// What a person sees of it; none when none came.
    QImage picture() const {
        if (!hints.contains("image-data")) return {};
        const auto data = hints.value("image-data").value<QDBusArgument>();
        int width = 0, height = 0, stride = 0, bits = 0, channels = 0;
        bool alpha = false;
        QByteArray bytes;
        data.beginStructure();
        data >> width >> height >> stride >> alpha >> bits >> channels >> bytes;
        data.endStructure();
        if (bytes.size() != qsizetype{stride} * height) return {};
        const auto format = alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888;
        return QImage(reinterpret_cast<const uchar*>(bytes.constData()), width, height, stride, format)
            .copy();
    }
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
