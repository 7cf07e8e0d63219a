// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/bus.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/neighbours.h"
#include "support/platformkeys.h"
#include "support/switchplugin.h"
#include "support/texts.h"

#include "simulator/devicesentry.h"

#include <QtTest>

using namespace Support;

namespace {

bool isRegistration(const BusMessage &message)
{
    return message.isCallOf(QStringLiteral("RequestName"))
        && message.arguments.value(0) == QVariant(Service);
}

} // namespace

/// How the daemon gets onto the bus, and when in its start it does so.
class TestRegistration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void enforcesEverythingBeforeItAsksForItsName();
    void asksForItsNameOnce();
    void nobodyIsServedDuringTheStart();
    void whoeverSeesTheNameFindsTheObject();
    void secondInstanceEnforcesAsAnyOther();
    void secondInstanceReadsTheConfiguration();
    void secondInstanceLeavesTheFirstOneItsName();
};

void TestRegistration::init()
{
    Files::reset();
}

void TestRegistration::enforcesEverythingBeforeItAsksForItsName()
{
    Neighbours neighbours;
    neighbours.add<Simulator::DeviceSentry>();
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();

    // USB devices are the last policy: with them the second pass is complete.
    const QString own = neighbours.monitor().uniqueName(Service);
    QStringList steps;
    const auto ownCalls = neighbours.monitor().messages([&](const BusMessage &message) {
        return message.type == BusMessage::Call && message.sender == own;
    });
    for (const BusMessage &call : ownCalls)
        steps.append(call.member);
    QCOMPARE(steps.count(QStringLiteral("Set")), 2);
    QCOMPARE(steps.count(QStringLiteral("RequestName")), 1);
    QVERIFY(steps.lastIndexOf(QStringLiteral("Set"))
            < steps.indexOf(QStringLiteral("RequestName")));
}

void TestRegistration::asksForItsNameOnce()
{
    BusMonitor monitor;
    Daemon first;
    QVERIFY(first.start());
    Daemon second;
    QVERIFY(!second.start());
    QCOMPARE(second.waitForExit(), 1);
    monitor.settle();
    QCOMPARE(monitor.messages(isRegistration).size(), 2);
    QCOMPARE(monitor.calls(QStringLiteral("ReleaseName")).size(), 0);
}

void TestRegistration::nobodyIsServedDuringTheStart()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("lens"), {1}, true);
    plugin.hold(QStringLiteral("keyValue"));
    BusMonitor monitor;
    Bus bus;
    Daemon daemon;
    daemon.launch();
    QVERIFY(plugin.waitForCall(QStringLiteral("holding keyValue")));
    monitor.settleBus();

    QCOMPARE(monitor.messages(isRegistration).size(), 0);
    QVERIFY(!bus.hasOwner(Service));
    // Whoever knows it by another name finds nothing there.
    const QString own = monitor.calls(QStringLiteral("ListNames")).value(0).sender;
    QDBusMessage question = QDBusMessage::createMethodCall(
        own, QStringLiteral("/org/kvt/PolicyManager"),
        QStringLiteral("org.kvt.PolicyManager.Policy"), QStringLiteral("KeyValue"));
    question.setArguments({QStringLiteral("UsbDevicesEnabled")});
    QCOMPARE(bus.call(question).errorName(),
             QStringLiteral("org.freedesktop.DBus.Error.UnknownObject"));

    plugin.release();
    QVERIFY(daemon.waitUntilReady());
    QCOMPARE(Client().policy(QStringLiteral("UsbDevicesEnabled")), QVariant(true));
}

void TestRegistration::whoeverSeesTheNameFindsTheObject()
{
    // Each step of the daemon that waits for somebody takes a moment longer, so that the client
    // comes in between if there is anything in between.
    Daemon daemon;
    daemon.setWrapper(texts({"strace", "--follow-forks", "--output=/dev/null", "--trace=futex",
                             "--inject=futex:delay_exit=3000"}));
    // Leaks cannot be looked for in a process that is traced.
    daemon.setEnvironment(QStringLiteral("LSAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
    Bus bus;
    daemon.launch();
    QVERIFY(bus.waitForOwner(Service));
    QCOMPARE(Client().policy(QStringLiteral("UsbDevicesEnabled")), QVariant(true));
    QCOMPARE(daemon.stop(), 0);
}

void TestRegistration::secondInstanceEnforcesAsAnyOther()
{
    Neighbours neighbours;
    neighbours.add<Simulator::DeviceSentry>();
    Daemon first;
    QVERIFY(first.start());
    neighbours.monitor().settle();
    neighbours.monitor().clear();
    QVERIFY(QFile::remove(CameraMarker));

    Daemon second;
    QVERIFY(!second.start());
    QCOMPARE(second.waitForExit(), 1);
    neighbours.monitor().settle();
    QCOMPARE(neighbours.calls(),
             texts({"Set(org.brinos.DeviceSentry1.UsbManager,Enabled,true)",
                    "Set(org.brinos.DeviceSentry1.UsbManager,Enabled,true)"}));
    QVERIFY(QFile::exists(CameraMarker));
    // The bus library has no text for a name that is taken.
    QCOMPARE(second.log(), texts({"critical|default|\"\""}));
}

void TestRegistration::secondInstanceReadsTheConfiguration()
{
    Daemon first;
    QVERIFY(first.start());
    QVERIFY(QFile::exists(CameraMarker));
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");

    Daemon second;
    QVERIFY(!second.start());
    QCOMPARE(second.waitForExit(), 1);
    QVERIFY(!QFile::exists(CameraMarker));
    QCOMPARE(Files::values(PolicyFile).size(), platformKeys().size());
    QCOMPARE(Client().policy(QStringLiteral("CameraEnabled")), QVariant(true));
}

void TestRegistration::secondInstanceLeavesTheFirstOneItsName()
{
    Bus bus;
    Daemon first;
    QVERIFY(first.start());
    Daemon second;
    QVERIFY(!second.start());
    QCOMPARE(second.waitForExit(), 1);
    QCOMPARE(bus.ownerProcess(Service), first.processId());

    // No trace is left that keeps the next one from its place.
    QCOMPARE(first.stop(), 0);
    QVERIFY(second.start());
}

QTEST_GUILESS_MAIN(TestRegistration)
#include "tst_registration.moc"
