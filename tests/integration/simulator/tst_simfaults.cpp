// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/sim.h"
#include "support/bus.h"
#include "support/daemon.h"
#include "support/files.h"

#include <QDBusPendingCall>
#include <QElapsedTimer>
#include <QtTest>

using namespace Support;

namespace {

QDBusMessage setMicrophone(const char *value)
{
    const QString name = QStringLiteral("org.freedesktop.ohm.mdm");
    QDBusMessage call = QDBusMessage::createMethodCall(
        name, QStringLiteral("/org/freedesktop/ohm/mdm"), name, QStringLiteral("Set"));
    call << QStringLiteral("microphone") << QString::fromLatin1(value);
    return call;
}

} // namespace

/// What "fail" does to a service, seen by its callers.
class TestSimFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void errorChangesNothing();
    void wrongTypeIsCarriedOut();
    void slowAnswersLate();
    void silentNeverAnswers();
    void lastFaultCounts();
    void daemonGoesOnWithoutTheService();
};

void TestSimFaults::initTestCase()
{
    Sim::install();
}

void TestSimFaults::init()
{
    Files::reset();
}

void TestSimFaults::errorChangesNothing()
{
    Sim device;
    QVERIFY(device.startDevice());
    Bus bus;
    QCOMPARE(Sim::run(QStringLiteral("fail audio error")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("expect fault audio error")).code, 0);
    QCOMPARE(bus.call(setMicrophone("disabled")).errorName(),
             QStringLiteral("org.freedesktop.DBus.Error.Failed"));
    QCOMPARE(Sim::run(QStringLiteral("expect microphone on")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("heal audio")).code, 0);
    QCOMPARE(bus.call(setMicrophone("disabled")).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(Sim::run(QStringLiteral("expect microphone off")).code, 0);
}

void TestSimFaults::wrongTypeIsCarriedOut()
{
    Sim device;
    QVERIFY(device.startDevice());
    Bus bus;
    QCOMPARE(Sim::run(QStringLiteral("fail audio wrong-type")).code, 0);
    const QDBusMessage reply = bus.call(setMicrophone("disabled"));
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    QCOMPARE(reply.signature(), QStringLiteral("i"));
    QCOMPARE(Sim::run(QStringLiteral("expect microphone off")).code, 0);
}

void TestSimFaults::slowAnswersLate()
{
    Sim device;
    QVERIFY(device.startDevice());
    Bus bus;
    QCOMPARE(Sim::run(QStringLiteral("fail audio slow 0.4")).code, 0);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(bus.call(setMicrophone("disabled")).type(), QDBusMessage::ReplyMessage);
    // The delay itself is the meaning of the verb; only an earlier answer is wrong.
    QVERIFY(timer.elapsed() >= 390);
}

void TestSimFaults::silentNeverAnswers()
{
    Sim device;
    QVERIFY(device.startDevice());
    Bus bus;
    QDBusConnection connection = bus.connect();
    QCOMPARE(Sim::run(QStringLiteral("fail audio silent")).code, 0);
    const QDBusPendingCall call = connection.asyncCall(setMicrophone("disabled"));
    QVERIFY(device.waitForOut(QStringLiteral("silent\n")));
    QCOMPARE(Sim::run(QStringLiteral("expect microphone on")).code, 0);
    QVERIFY(!call.isFinished());
}

void TestSimFaults::lastFaultCounts()
{
    Sim device;
    QVERIFY(device.startDevice());
    Bus bus;
    QCOMPARE(Sim::run(QStringLiteral("fail audio silent")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("fail audio error")).code, 0);
    QVERIFY(bus.call(setMicrophone("disabled")).type() == QDBusMessage::ErrorMessage);
    QCOMPARE(Sim::run(QStringLiteral("heal audio")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("expect fault audio none")).code, 0);
}

void TestSimFaults::daemonGoesOnWithoutTheService()
{
    Sim device;
    QVERIFY(device.startDevice());
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Sim::run(QStringLiteral("stop runtime")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("launch browserstandalone")).code, 0);
    Files::write(QStringLiteral("/tmp/test.sim"),
                 "govctl set BrowserEnabled off\nexpect denied browserstandalone yes\n"
                 "expect running browserstandalone yes\n");
    const Sim::Outcome outcome = Sim::run(QStringLiteral("run --timeout 60 /tmp/test.sim"));
    QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
}

QTEST_GUILESS_MAIN(TestSimFaults)
#include "tst_simfaults.moc"
