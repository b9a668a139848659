// Notifications to a server of the test's own, on a session bus of the test's own. A process knows one
// session bus for its life, so each case needs a process of its own, as CTest gives it.
#include "platform/cocoa/UserNotificationCenter.h"
#include "tests/cocoa/NotificationServer.h"
#include "tests/support/TestApplication.h"

#include <QDBusConnection>
#include <QProcess>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

/// A session bus, and on it a notification server when it is started.
class Desktop {
public:
    Desktop() {
        m_bus.start("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
        EXPECT_TRUE(m_bus.waitForReadyRead());
        m_address = QString::fromUtf8(m_bus.readLine()).trimmed();
        setenv("DBUS_SESSION_BUS_ADDRESS", m_address.toUtf8().constData(), 1);
    }
    ~Desktop() {
        m_bus.kill();
        m_bus.waitForFinished();
    }
    void startServer() {
        // A connection apart: the server answers as another program would.
        QDBusConnection connection = QDBusConnection::connectToBus(m_address, "server");
        ASSERT_TRUE(connection.registerObject("/org/freedesktop/Notifications", &server,
                                              QDBusConnection::ExportAllSlots));
        ASSERT_TRUE(connection.registerService("org.freedesktop.Notifications"));
    }
    bool arrived(std::size_t count) {
        return support::runUntil([&] { return server.received.size() >= count; });
    }

    NotificationServer server;

private:
    QProcess m_bus;
    QString m_address;
};

cocoa::UserNotificationCenter& center() {
    return cocoa::UserNotificationCenter::defaultUserNotificationCenter();
}

class UserNotificationTest : public testing::Test {
protected:
    QApplication& application = support::offscreenApplication();
};

TEST_F(UserNotificationTest, TheBodyIsEscapedAndALargePictureMadeSmall) {
    Desktop desktop;
    ASSERT_NO_FATAL_FAILURE(desktop.startServer());
    QImage cover(600, 300, QImage::Format_RGB32);
    cover.fill(Qt::red);
    center().deliverNotification({"A <b> & B", "C <i> & D", cover});
    ASSERT_TRUE(desktop.arrived(1));
    const Received& first = desktop.server.received[0];
    EXPECT_EQ(first.title, "A <b> & B");
    EXPECT_EQ(first.body, "C &lt;i&gt; &amp; D");
    EXPECT_EQ(first.picture().size(), QSize(256, 128));
    EXPECT_EQ(first.picture().pixelColor(128, 64), QColor(Qt::red));
}

TEST_F(UserNotificationTest, OfManyThatComeAtOnceTheFirstAndTheLastAreShown) {
    Desktop desktop;
    ASSERT_NO_FATAL_FAILURE(desktop.startServer());
    for (int each = 0; each < 50; ++each)
        center().deliverNotification({QString::number(each), QString(), {}});
    ASSERT_TRUE(desktop.arrived(2));
    EXPECT_EQ(desktop.server.received[0].title, "0");
    EXPECT_EQ(desktop.server.received[1].title, "49");
    EXPECT_EQ(desktop.server.received[1].replaces, 41U);
    EXPECT_TRUE(desktop.server.received[1].picture().isNull());
    EXPECT_EQ(desktop.server.received.size(), 2U);
}

TEST_F(UserNotificationTest, WithoutAServerNothingHappensUntilOneComes) {
    Desktop desktop;
    center().deliverNotification({"lost", QString(), {}});
    ASSERT_NO_FATAL_FAILURE(desktop.startServer());
    ASSERT_TRUE(support::runUntil([&] {
        center().deliverNotification({"heard", QString(), {}});
        return !desktop.server.received.empty();
    }));
}

TEST_F(UserNotificationTest, WithoutABusNothingHappens) {
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    center().deliverNotification({"lost", QString(), {}});
    EXPECT_FALSE(QDBusConnection::sessionBus().isConnected());
}

} // namespace
