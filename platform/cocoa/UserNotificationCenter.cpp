#include "platform/cocoa/UserNotificationCenter.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>

#include <utility>

namespace cocoa {
namespace {

/// Larger pictures are scaled down before they are sent.
constexpr int maxPictureSide = 256;
constexpr int serversOwnTimeout = -1;

/// The hint "image-data": width, height, bytes a row, has alpha, bits a sample, samples a pixel, bytes.
struct ImageData {
    int width = 0;
    int height = 0;
    int rowStride = 0;
    bool hasAlpha = true;
    int bitsPerSample = 8;
    int channels = 4;
    QByteArray bytes;
};

QDBusArgument& operator<<(QDBusArgument& argument, const ImageData& image) {
    argument.beginStructure();
    argument << image.width << image.height << image.rowStride << image.hasAlpha << image.bitsPerSample
             << image.channels << image.bytes;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, ImageData& image) {
    argument.beginStructure();
    argument >> image.width >> image.height >> image.rowStride >> image.hasAlpha >> image.bitsPerSample >>
        image.channels >> image.bytes;
    argument.endStructure();
    return argument;
}

ImageData imageData(const QImage& picture) {
    QImage small = picture;
    if (picture.width() > maxPictureSide || picture.height() > maxPictureSide) {
        small = picture.scaled(maxPictureSide, maxPictureSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    small = small.convertToFormat(QImage::Format_RGBA8888);
    ImageData data;
    data.width = small.width();
    data.height = small.height();
    data.rowStride = int(small.bytesPerLine());
    data.bytes = QByteArray(reinterpret_cast<const char*>(small.constBits()), small.sizeInBytes());
    return data;
}

} // namespace
} // namespace cocoa

Q_DECLARE_METATYPE(cocoa::ImageData)

namespace cocoa {

UserNotificationCenter& UserNotificationCenter::defaultUserNotificationCenter() {
    static UserNotificationCenter center;
    return center;
}

void UserNotificationCenter::deliverNotification(const UserNotification& notification) {
    if (QGuiApplication::applicationState() == Qt::ApplicationActive) return;
    if (m_sending) {
        m_waiting = notification;
        return;
    }
    send(notification);
}

void UserNotificationCenter::send(const UserNotification& notification) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    QVariantMap hints{{QStringLiteral("desktop-entry"), QGuiApplication::desktopFileName()}};
    if (!notification.contentImage.isNull()) {
        qDBusRegisterMetaType<ImageData>();
        hints.insert(QStringLiteral("image-data"), QVariant::fromValue(imageData(notification.contentImage)));
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    // The body is markup, the title is not.
    call << QGuiApplication::applicationDisplayName() << m_shown << QGuiApplication::desktopFileName()
         << notification.title << notification.informativeText.toHtmlEscaped() << QStringList() << hints
         << serversOwnTimeout;
    m_sending = true;
    auto* const watcher = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(call), this).release();
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        sent(*finished);
    });
}

void UserNotificationCenter::sent(const QDBusPendingCallWatcher& call) {
    const QDBusPendingReply<uint> reply = call;
    m_sending = false;
    if (!reply.isError()) m_shown = reply.value();
    if (m_waiting) deliverNotification(*std::exchange(m_waiting, std::nullopt));
}

} // namespace cocoa
