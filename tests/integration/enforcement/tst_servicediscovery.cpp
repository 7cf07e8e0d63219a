// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/busrelay.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/watcheddaemon.h"

#include "simulator/networktechnology.h"

#include <QRegularExpression>
#include <QtTest>

using namespace Support;

namespace {

const QString Connman = QStringLiteral("net.connman");
const QString Sharing = QStringLiteral("InternetSharingEnabled");
const QString SharingOff = QStringLiteral(R"(call SetProperty "Tethering" false)");
const QString CallOfAbsent =
    QStringLiteral("warning|default|Failed to disable internet sharing:"
                   " QDBusError(\"org.freedesktop.DBus.Error.ServiceUnknown\","
                   " \"The name net.connman was not provided by any .service files\")");

/// The daemon's lines about what it looks for here.
QStringList linesAbout(WatchedDaemon &daemon)
{
    return daemon.logged().filter(QRegularExpression(QStringLiteral("sharing|registered")));
}

int callsOf(WatchedDaemon &daemon, const QString &method)
{
    daemon.monitor().settle();
    return daemon.monitor().calls(method).size();
}

} // namespace

/// How the daemon learns that a service is there.
class TestServiceDiscovery : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void presentServiceIsServedDuringTheStart();
    void departureCountsAsAppearance();
    void failingListLeavesServicesToLaterNews();
    void failingListIsLoggedWithoutABus();
    void stopDropsWaitingTasks();
};

void TestServiceDiscovery::init()
{
    Files::reset();
    Files::write(PolicyFile, "[policy]\nInternetSharingEnabled=false\n");
}

void TestServiceDiscovery::presentServiceIsServedDuringTheStart()
{
    Simulator::NetworkTechnology connman;
    QVERIFY(connman.appear());
    WatchedDaemon daemon;
    QVERIFY(daemon.process().start());
    daemon.monitor().settle();

    // Once when it is stored and once with all others, and before the daemon has its name.
    const auto messages = daemon.monitor().messages([](const BusMessage &message) {
        return message.isCallOf(QStringLiteral("SetProperty"))
            || (message.isSignal(QStringLiteral("NameOwnerChanged"))
                && message.arguments.value(0) == Service);
    });
    QCOMPARE(messages.size(), 3);
    QVERIFY(messages.at(0).isCallOf(QStringLiteral("SetProperty")));
    QVERIFY(messages.at(1).isCallOf(QStringLiteral("SetProperty")));
    QVERIFY(messages.at(2).isSignal(QStringLiteral("NameOwnerChanged")));
    QCOMPARE(daemon.monitor()
                 .calls(QStringLiteral("ListNames"), daemon.monitor().uniqueName(Service))
                 .size(),
             1);
    QCOMPARE(linesAbout(daemon), QStringList());
}

void TestServiceDiscovery::departureCountsAsAppearance()
{
    Simulator::NetworkTechnology connman;
    QVERIFY(connman.appear());
    BusRelay relay;
    relay.holdAt("ListNames");
    WatchedDaemon daemon;
    daemon.process().setEnvironment(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), relay.address());
    daemon.process().launch();
    // The daemon hears of changes already, but has not asked yet who is there: it has missed the
    // coming of this service, and all that it ever sees is its leaving.
    QVERIFY(relay.waitUntilHeld());
    connman.leave();
    QVERIFY(daemon.bus().waitForNoOwner(Connman));
    relay.release();
    QVERIFY(daemon.bus().waitForOwner(Service));

    // Both tasks of the start have been tried, once each.
    QCOMPARE(callsOf(daemon, QStringLiteral("SetProperty")), 2);
    QCOMPARE(linesAbout(daemon), QStringList({CallOfAbsent, CallOfAbsent}));
    // From now on tasks are not kept any more.
    daemon.forget();
    QCOMPARE(daemon.set(Sharing, true), QVariant(true));
    QCOMPARE(daemon.set(Sharing, false), QVariant(true));
    QCOMPARE(daemon.said().filter(QStringLiteral("SetProperty")), QStringList(SharingOff));
    QCOMPARE(linesAbout(daemon), QStringList(CallOfAbsent));
    daemon.forget();
    QVERIFY(connman.appear());
    QCOMPARE(daemon.said(), QStringList());
    QCOMPARE(daemon.set(Sharing, true), QVariant(true));
    QCOMPARE(daemon.set(Sharing, false), QVariant(true));
    QCOMPARE(connman.calls(QStringLiteral("SetProperty")).size(), 1);
}

void TestServiceDiscovery::failingListLeavesServicesToLaterNews()
{
    Simulator::NetworkTechnology connman;
    QVERIFY(connman.appear());
    BusRelay relay;
    relay.spoil("ListNames", "ListNothi"); // which the bus does not know
    WatchedDaemon daemon;
    daemon.process().setEnvironment(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), relay.address());
    daemon.process().launch();
    QVERIFY(daemon.bus().waitForOwner(Service));

    // The text ends in a blank, and another one comes before the error.
    const QStringList lines = linesAbout(daemon);
    QCOMPARE(lines.size(), 1);
    const QRegularExpression format(
        QStringLiteral(R"(^warning\|default\|Failed to get registered services:  QDBusError\()"
                       R"("org\.freedesktop\.DBus\.Error\.UnknownMethod", ".*ListNothi.*"\)$)"));
    QVERIFY2(format.match(lines.first()).hasMatch(), qPrintable(lines.first()));
    QCOMPARE(callsOf(daemon, QStringLiteral("ListNothi")), 1); // and it does not ask again
    QCOMPARE(callsOf(daemon, QStringLiteral("SetProperty")), 0); // nobody is known to be there
    QCOMPARE(daemon.set(Sharing, true), QVariant(true));
    QCOMPARE(daemon.set(Sharing, false), QVariant(true));
    QCOMPARE(callsOf(daemon, QStringLiteral("SetProperty")), 0);

    daemon.process().pause(); // so that it hears of the leaving when the service is back already
    connman.leave();
    QVERIFY(daemon.bus().waitForNoOwner(Connman));
    QVERIFY(connman.appear());
    daemon.process().resume();
    QCOMPARE(callsOf(daemon, QStringLiteral("SetProperty")), 3); // two of the start, one change
    QCOMPARE(connman.calls(QStringLiteral("SetProperty")).size(), 3);
    QCOMPARE(linesAbout(daemon).size(), 1);
}

void TestServiceDiscovery::failingListIsLoggedWithoutABus()
{
    Bus bus;
    bus.stop();
    Daemon daemon;
    daemon.launch();
    QCOMPARE(daemon.waitForExit(), 1);
    QCOMPARE(
        daemon.log().filter(QStringLiteral("registered")),
        QStringList(QStringLiteral("warning|default|Failed to get registered services:  QDBusError("
                                   "\"org.freedesktop.DBus.Error.Disconnected\","
                                   " \"Not connected to D-Bus server\")")));
}

void TestServiceDiscovery::stopDropsWaitingTasks()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.process().stop(), 0);
    Simulator::NetworkTechnology connman;
    QVERIFY(connman.appear());
    daemon.monitor().settle();
    QCOMPARE(daemon.monitor().calls(QStringLiteral("SetProperty")).size(), 0);
    QCOMPARE(linesAbout(daemon), QStringList());
}

QTEST_GUILESS_MAIN(TestServiceDiscovery)
#include "tst_servicediscovery.moc"
