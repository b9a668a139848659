// What is asked of the services that can keep the machine awake, on real buses.

#include "tests/app/SleepServices.h"

#include "app/desktop/SleepInhibitor.h"
#include "core/background/Workers.h"
#include "tests/support/TestApplication.h"

#include <QDBusConnection>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <stdexcept>
#include <unistd.h>

namespace {

using support::runUntil;

const QString portalName = QStringLiteral("org.freedesktop.portal.Desktop");
const QString powerManagementName = QStringLiteral("org.freedesktop.PowerManagement.Inhibit");
const QString logindName = QStringLiteral("org.freedesktop.login1");

/// A session bus and a system bus, both in one.
class Buses {
public:
    Buses() {
        const QString address = QStringLiteral("unix:path=%1/bus").arg(m_folder.path());
        m_daemon.start("setpriv", {"--pdeathsig", "KILL", "dbus-daemon", "--session", "--nofork",
                                   "--nopidfile", "--print-address", "--address=" + address});
        if (!m_daemon.waitForReadyRead()) throw std::runtime_error("no bus");
        qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
    }
    ~Buses() {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    Buses(const Buses&) = delete;
    Buses& operator=(const Buses&) = delete;

private:
    QTemporaryDir m_folder;
    QProcess m_daemon;
};

class SleepInhibitorTest : public testing::Test {
protected:
    SleepInhibitorTest()
        : services(
              QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), "services")) {
        QGuiApplication::setApplicationDisplayName("Tulplayer");
        workers.setWake([this] {
            QMetaObject::invokeMethod(
                qApp, [this] { workers.deliver(); }, Qt::QueuedConnection);
        });
    }
    ~SleepInhibitorTest() override { QDBusConnection::disconnectFromBus("services"); }

    void offer(const QString& name, const QString& path, QObject& service) {
        ASSERT_TRUE(services.registerObject(path, &service, QDBusConnection::ExportAllSlots));
        ASSERT_TRUE(services.registerService(name));
    }
    void offerPortal() { offer(portalName, QStringLiteral("/org/freedesktop/portal/desktop"), portal); }
    void offerPowerManagement() {
        offer(powerManagementName, QStringLiteral("/org/freedesktop/PowerManagement/Inhibit"),
              powerManagement);
    }
    void offerLogind() { offer(logindName, QStringLiteral("/org/freedesktop/login1"), logind); }
    bool holds(bool portals, bool powerManagements, bool logins) {
        return runUntil([&] {
            return portal.isHeld == portals && powerManagement.isHeld == powerManagements &&
                   logind.isHeld() == logins;
        });
    }

    QApplication& application = support::offscreenApplication();
    Buses buses;
    QDBusConnection services;
    Workers workers;
    PortalRequest request;
    Portal portal{request};
    PowerManagement powerManagement;
    Logind logind;
};

TEST_F(SleepInhibitorTest, AsksTheFirstServiceThatRunsAndReleases) {
    app::SleepInhibitor inhibitor(workers);
    inhibitor.setInhibits(true); // without a service: no effect
    offerLogind();
    inhibitor.setInhibits(false);
    inhibitor.setInhibits(true);
    EXPECT_TRUE(holds(false, false, true));
    EXPECT_EQ(logind.asked, "idle Tulplayer Playing audio block");
    inhibitor.setInhibits(false);
    EXPECT_TRUE(holds(false, false, false)) << "its descriptor is closed";

    offerPowerManagement();
    inhibitor.setInhibits(true);
    EXPECT_TRUE(holds(false, true, false));
    inhibitor.setInhibits(false);
    EXPECT_TRUE(holds(false, false, false));

    ASSERT_TRUE(services.registerObject(request.path, &request, QDBusConnection::ExportAllSlots));
    offerPortal();
    inhibitor.setInhibits(true);
    inhibitor.setInhibits(true);
    EXPECT_TRUE(holds(true, false, false));
    EXPECT_EQ(portal.flags, 4U);
    EXPECT_EQ(portal.calls, 1);
    inhibitor.setInhibits(false);
    EXPECT_TRUE(holds(false, false, false));

    portal.refuses = true;
    inhibitor.setInhibits(true);
    EXPECT_TRUE(holds(false, true, false)) << "a portal without a backend for it";
    inhibitor.setInhibits(false);
    EXPECT_TRUE(holds(false, false, false));

    portal.refuses = false;
    inhibitor.setInhibits(true);
    inhibitor.setInhibits(false); // before the answer
    EXPECT_TRUE(runUntil([&] { return portal.calls == 3; }));
    EXPECT_TRUE(holds(false, false, false));
}

} // namespace
