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

class UserNotificationTest : public testing::Test {
protected:
    ~UserNotificationTest() override {
        bus.kill();
        bus.waitForFinished();
    }
    void startBus() {
        bus.start("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
        EXPECT_TRUE(bus.waitForReadyRead());
        address = QString::fromUtf8(bus.readLine()).trimmed();
        setenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8().constData(), 1);
    }
    void startServer() {
        // A connection apart: the server answers as another program would.
        QDBusConnection connection = QDBusConnection::connectToBus(address, "server");
        ASSERT_TRUE(connection.registerObject("/org/freedesktop/Notifications", &server,
                                              QDBusConnection::ExportAllSlots));
        ASSERT_TRUE(connection.registerService("org.freedesktop.Notifications"));
    }
    static void deliver(const QString& title, const QString& body = {}, const QImage& picture = {}) {
        cocoa::UserNotificationCenter::defaultUserNotificationCenter().deliverNotification(
            {title, body, picture});
    }

    QApplication& application = support::offscreenApplication();
    NotificationServer server;
    QProcess bus;
    QString address;
};

TEST_F(UserNotificationTest, OfManyAtOnceTheFirstAndTheLastAreShownEscapedAndWithASmallPicture) {
    startBus();
    ASSERT_NO_FATAL_FAILURE(startServer());
    QImage cover(600, 300, QImage::Format_RGB32);
    cover.fill(Qt::red);
    deliver("A <b> & B", "C <i> & D", cover);
    for (int each = 1; each < 50; ++each)
        deliver(QString::number(each));
    ASSERT_TRUE(support::runUntil([&] { return server.received.size() >= 2; }));
    EXPECT_EQ(server.received[0].title, "A <b> & B");
    EXPECT_EQ(server.received[0].body, "C &lt;i&gt; &amp; D");
    EXPECT_EQ(server.received[0].picture().size(), QSize(256, 128));
    EXPECT_EQ(server.received[1].title, "49");
    EXPECT_EQ(server.received[1].replaces, 41U);
    EXPECT_TRUE(server.received[1].picture().isNull());
    EXPECT_EQ(server.received.size(), 2U);
}

TEST_F(UserNotificationTest, WithoutAServerNothingHappensUntilOneComes) {
    startBus();
    deliver("lost");
    ASSERT_NO_FATAL_FAILURE(startServer());
    ASSERT_TRUE(support::runUntil([&] {
        deliver("shown");
        return !server.received.empty();
    }));
}

TEST_F(UserNotificationTest, WithoutABusNothingHappens) {
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    deliver("lost");
    EXPECT_FALSE(QDBusConnection::sessionBus().isConnected());
}

} // namespace
