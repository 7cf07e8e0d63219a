// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/sim.h"
#include "support/bus.h"
#include "support/files.h"

#include <QtTest>

#include <csignal>

using namespace Support;

namespace {

const QString NoDevice =
    QStringLiteral("govd-sim: no device is on the system bus; run \"govd-sim device\" in another "
                   "terminal\n");

} // namespace

/// What goes wrong around the simulator: one line and one exit code for each.
class TestSimTrouble : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void noDevice_data();
    void noDevice();
    void noBus_data();
    void noBus();
    void secondDevice();
    void nameOfAServiceIsTaken();
    void nameIsTakenMeanwhile();
    void busIsLost();
    void endsInOrder_data();
    void endsInOrder();
    void readerHasGone();
    void fullDisk();
    void closedOutput();
};

void TestSimTrouble::initTestCase()
{
    Sim::install();
}

void TestSimTrouble::init()
{
    Files::reset();
}

void TestSimTrouble::noDevice_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments :
         {"status", "status --watch", "services", "plug usb", "unplug", "unplug A", "launch clock",
          "stop audio", "start audio", "fail audio error", "heal audio", "certified yes",
          "expect camera on"})
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
}

void TestSimTrouble::noDevice()
{
    QFETCH(QString, arguments);
    const Sim::Outcome outcome = Sim::run(arguments);
    QCOMPARE(outcome.code, 5);
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.err, NoDevice);
}

void TestSimTrouble::noBus_data()
{
    noDevice_data();
    QTest::newRow("device") << QStringLiteral("device");
}

void TestSimTrouble::noBus()
{
    QFETCH(QString, arguments);
    Bus bus;
    bus.stop();
    const Sim::Outcome outcome = Sim::run(arguments);
    QCOMPARE(outcome.code, 5);
    QVERIFY2(outcome.err.startsWith(
                 QStringLiteral("govd-sim: cannot reach the system bus; check that dbus runs")),
             qPrintable(outcome.err));
    QCOMPARE(outcome.err.count(QLatin1Char('\n')), 1);
}

void TestSimTrouble::secondDevice()
{
    Sim device;
    QVERIFY(device.startDevice());
    const Sim::Outcome second = Sim::run(QStringLiteral("device"));
    QCOMPARE(second.code, 3);
    QCOMPARE(second.err,
             QStringLiteral("govd-sim: a device is on this bus already; end it first, or use that "
                            "one\n"));
    QCOMPARE(Sim::run(QStringLiteral("status")).code, 0);
}

void TestSimTrouble::nameOfAServiceIsTaken()
{
    Bus bus;
    QDBusConnection real = bus.connect();
    QVERIFY(real.registerService(QStringLiteral("org.freedesktop.UDisks2")));
    const Sim::Outcome outcome = Sim::run(QStringLiteral("device"));
    QCOMPARE(outcome.code, 3);
    QVERIFY(outcome.err.startsWith(
        QStringLiteral("govd-sim: the name org.freedesktop.UDisks2 cannot be taken")));
    QCOMPARE(outcome.err.count(QLatin1Char('\n')), 1);
}

void TestSimTrouble::nameIsTakenMeanwhile()
{
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(Sim::run(QStringLiteral("stop network")).code, 0);
    Bus bus;
    QDBusConnection other = bus.connect();
    QVERIFY(bus.waitForNoOwner(QStringLiteral("net.connman")));
    QVERIFY(other.registerService(QStringLiteral("net.connman")));
    const Sim::Outcome outcome = Sim::run(QStringLiteral("start network"));
    QCOMPARE(outcome.code, 3);
    QVERIFY(outcome.err.contains(QStringLiteral("net.connman cannot be taken on the bus; end")));
    QVERIFY(other.unregisterService(QStringLiteral("net.connman")));
    QCOMPARE(Sim::run(QStringLiteral("start network")).code, 0);
}

void TestSimTrouble::busIsLost()
{
    Sim device;
    QVERIFY(device.startDevice());
    Sim watch;
    watch.start({QStringLiteral("status"), QStringLiteral("--watch")});
    QVERIFY(watch.waitForOut(QStringLiteral("last events")));
    Bus bus;
    bus.stop();
    const Sim::Outcome outcome = device.finish();
    QCOMPARE(outcome.code, 5);
    QVERIFY(outcome.err.endsWith(QStringLiteral("govd-sim: the connection to the system bus was "
                                                "lost; check that dbus runs, and start the device "
                                                "again\n")));
    QCOMPARE(watch.finish().code, 5);
}

void TestSimTrouble::endsInOrder_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("terminate") << SIGTERM;
    QTest::newRow("interrupt") << SIGINT;
}

void TestSimTrouble::endsInOrder()
{
    QFETCH(int, number);
    Sim device;
    QVERIFY(device.startDevice());
    device.signal(number);
    QCOMPARE(device.finish().code, 0);
    Sim again;
    QVERIFY(again.startDevice());
}

void TestSimTrouble::readerHasGone()
{
    Sim device;
    device.startShell(QStringLiteral("$SIM device | head -n 1; echo ${PIPESTATUS[0]}"));
    QCOMPARE(Sim::shell(QStringLiteral(
                            "until $SIM launch clock 2>/dev/null; do :; done; $SIM launch camera"))
                 .code,
             0);
    // The reader leaves after the first line; a later one has nowhere to go.
    QVERIFY(device.waitForOut(QStringLiteral("Launch(\"clock\")")));
    const Sim::Outcome last = Sim::shell(QStringLiteral(
        "while $SIM launch messages 2>/tmp/err; do :; done; cat /tmp/err >&2; rm /tmp/err"));
    QCOMPARE(last.err, NoDevice);
    QCOMPARE(device.finish().lines().last(), QStringLiteral("0"));
}

void TestSimTrouble::fullDisk()
{
    const Sim::Outcome help = Sim::shell(QStringLiteral("$SIM --help >/dev/full"));
    QCOMPARE(help.code, 7);
    QVERIFY(help.err.startsWith(QStringLiteral("govd-sim: cannot write the result (")));
}

void TestSimTrouble::closedOutput()
{
    Sim device;
    device.startShell(QStringLiteral("exec $SIM device >&-"));
    QCOMPARE(Sim::shell(QStringLiteral("until $SIM launch clock 2>/dev/null; do :; done")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("expect running clock yes")).code, 0);
}

QTEST_GUILESS_MAIN(TestSimTrouble)
#include "tst_simtrouble.moc"
