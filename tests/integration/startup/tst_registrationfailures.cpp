// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/bus.h"
#include "support/buspolicy.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/neighbours.h"
#include "support/platformkeys.h"
#include "support/switchplugin.h"
#include "support/texts.h"

#include "simulator/devicesentry.h"

#include <QtTest>

using namespace Support;

namespace {

const QString UsbFailure =
    QStringLiteral("warning|default|Failed to disable USB devices connection.");

/// @p text as a debug stream writes it.
QString quoted(const QString &text)
{
    QString result;
    QDebug(&result).nospace() << text;
    return result;
}

bool isRegistration(const BusMessage &message)
{
    return message.isCallOf(QStringLiteral("RequestName"))
        && message.arguments.value(0) == QVariant(Service);
}

/// A library that takes the daemon's object path from inside its process.
class PathTaker
{
    Q_DISABLE_COPY(PathTaker)

public:
    PathTaker()
        : m_path(LockPlugin::directory() + QStringLiteral("pathtaker.so"))
    {
        QDir().mkpath(LockPlugin::directory());
        if (!QFile::copy(QStringLiteral(GOVD_TEST_PATHTAKER), m_path))
            qFatal("Cannot install %s", qPrintable(m_path));
    }

    ~PathTaker() { QFile::remove(m_path); }

private:
    QString m_path;
};

} // namespace

/// Starts that end before the daemon is on the bus: all has been enforced by then.
class TestRegistrationFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void withoutBusEverythingElseIsDone();
    void busThatIsLostDuringTheStartIsNoBus();
    void busThatIsLostDuringACallIsNoBus();
    void nameThatIsNotPermittedEndsTheStart();
    void pathThatIsTakenEndsTheStart();
};

void TestRegistrationFailures::init()
{
    Files::reset();
}

void TestRegistrationFailures::withoutBusEverythingElseIsDone()
{
    Files::write(PolicyFile, "[policy]\nDeveloperShellEnabled=false\n");
    Bus bus;
    bus.stop();
    Daemon daemon;
    QVERIFY(!daemon.start());
    QCOMPARE(daemon.waitForExit(), 1);

    QCOMPARE(daemon.log(),
             texts({"warning|default|Failed to get registered services:  "
                    "QDBusError(\"org.freedesktop.DBus.Error.Disconnected\", "
                    "\"Not connected to D-Bus server\")",
                    "warning|default|Failed to disable USB devices connection.",
                    "warning|default|Failed to disable USB devices connection.",
                    "critical|default|\"Not connected to D-Bus server\""}));
    QVERIFY(QFile::exists(CameraMarker));
    QVERIFY(QFile::exists(QStringLiteral("/var/lib/devel-su/.disable")));
    const QMap<QString, QString> values = Files::values(PolicyFile);
    QCOMPARE(values.size(), platformKeys().size());
    QCOMPARE(values.value(QStringLiteral("UserReportExportEnabled")), QStringLiteral("false"));
}

void TestRegistrationFailures::busThatIsLostDuringTheStartIsNoBus()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("lens"), {1}, true);
    plugin.hold(QStringLiteral("keyValue"));
    Bus bus;
    Daemon daemon;
    daemon.launch();
    QVERIFY(plugin.waitForCall(QStringLiteral("holding keyValue")));
    bus.stop();
    plugin.release();
    QCOMPARE(daemon.waitForExit(), 1);
    QCOMPARE(daemon.log(),
             QStringList({UsbFailure, UsbFailure,
                          QStringLiteral("critical|default|\"Not connected to "
                                         "D-Bus server\"")}));
    QVERIFY(QFile::exists(CameraMarker));
}

void TestRegistrationFailures::busThatIsLostDuringACallIsNoBus()
{
    Bus bus;
    Daemon daemon;
    {
        Neighbours neighbours;
        auto *sentry = neighbours.add<Simulator::DeviceSentry>();
        neighbours.run([sentry] { sentry->setFault(Simulator::Fault::silence()); });
        daemon.launch();
        QVERIFY(neighbours.monitor().waitFor(
            [](const BusMessage &message) { return message.isCallOf(QStringLiteral("Set")); }));
        bus.stop();
    }
    QCOMPARE(daemon.waitForExit(), 1);
    QCOMPARE(daemon.log().last(),
             QStringLiteral("critical|default|\"Not connected to D-Bus server\""));
}

void TestRegistrationFailures::nameThatIsNotPermittedEndsTheStart()
{
    const BusPolicy denial("<deny own='org.kvt.PolicyManager'/>");
    BusMonitor monitor;
    Daemon daemon;
    QVERIFY(!daemon.start());
    QCOMPARE(daemon.waitForExit(), 1);
    monitor.settle();

    const BusMessage request = monitor.messages(isRegistration).value(0);
    const QVector<BusMessage> replies =
        monitor.messages([&](const BusMessage &message) { return message.answers(request); });
    QCOMPARE(replies.size(), 1);
    QCOMPARE(replies.first().errorName, QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"));
    const QString text = replies.first().arguments.value(0).toString();
    QVERIFY(!text.isEmpty());
    QCOMPARE(
        daemon.log(),
        QStringList({UsbFailure, UsbFailure, QLatin1String("critical|default|") + quoted(text)}));
    QVERIFY(QFile::exists(CameraMarker));
}

void TestRegistrationFailures::pathThatIsTakenEndsTheStart()
{
    const PathTaker taker;
    Neighbours neighbours;
    neighbours.add<Simulator::DeviceSentry>();
    Daemon daemon;
    QVERIFY(!daemon.start());
    QCOMPARE(daemon.waitForExit(), 1);
    neighbours.monitor().settle();
    // The bus library has no text for a path that is taken.
    QCOMPARE(daemon.log(), texts({"critical|default|\"\""}));
    QCOMPARE(neighbours.calls(QStringLiteral("org.brinos.DeviceSentry1")).size(), 2);
    QCOMPARE(neighbours.monitor().messages(isRegistration).size(), 0);
    QVERIFY(QFile::exists(CameraMarker));
}

QTEST_GUILESS_MAIN(TestRegistrationFailures)
#include "tst_registrationfailures.moc"
