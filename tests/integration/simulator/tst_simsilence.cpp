// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/sim.h"
#include "support/bus.h"
#include "support/busmonitor.h"
#include "support/files.h"

#include <QtTest>

#include <csignal>

using namespace Support;

namespace {

/// The sandbox's bus takes connections and says nothing, as long as this lives.
class StoppedBus
{
    Q_DISABLE_COPY(StoppedBus)

public:
    StoppedBus()
        : m_process(
            static_cast<pid_t>(Support::Bus().ownerProcess(QStringLiteral("org.freedesktop.DBus"))))
    {
        if (m_process <= 0 || ::kill(m_process, SIGSTOP) != 0)
            qFatal("the bus cannot be stopped");
    }
    ~StoppedBus() { ::kill(m_process, SIGCONT); }

private:
    pid_t m_process;
};

QString noAnswer(const char *seconds, const char *who)
{
    return QStringLiteral("govd-sim: no answer within %1 s; check that %2 is not stopped, or wait "
                          "longer with --timeout\n")
        .arg(QLatin1String(seconds), QLatin1String(who));
}

} // namespace

/// What the simulator says, and when it ends, while somebody does not answer.
class TestSimSilence : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void silentBus_data();
    void silentBus();
    void busFallsSilent();
    void stuckDevice_data();
    void stuckDevice();
    void deviceThatLeaves();
};

void TestSimSilence::initTestCase()
{
    Sim::install();
}

void TestSimSilence::init()
{
    Files::reset();
}

void TestSimSilence::silentBus_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments : {"device", "status", "status --watch", "services", "plug usb",
                                  "unplug A", "expect camera on"})
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
}

void TestSimSilence::silentBus()
{
    QFETCH(QString, arguments);
    const StoppedBus bus;
    const Sim::Outcome outcome = Sim::run(arguments + QStringLiteral(" --timeout 0.3"));
    QCOMPARE(outcome.code, 6);
    QCOMPARE(outcome.err, noAnswer("0.3", "the system bus"));
}

/// The connection stands by then.
void TestSimSilence::busFallsSilent()
{
    Sim device;
    QVERIFY(device.startDevice());
    BusMonitor monitor;
    device.signal(SIGSTOP);
    Sim status;
    status.start({QStringLiteral("status"), QStringLiteral("--timeout"), QStringLiteral("2")});
    QVERIFY(monitor.waitFor(
        [](const BusMessage &message) { return message.member == QLatin1String("Get"); }));
    const StoppedBus bus;
    const Sim::Outcome outcome = status.finish();
    QCOMPARE(outcome.code, 6);
    QCOMPARE(outcome.err, noAnswer("2", "the system bus"));
}

void TestSimSilence::stuckDevice_data()
{
    QTest::addColumn<QString>("seconds");
    for (const char *seconds : {"0.05", "0.1", "0.2", "0.3", "0.5", "0.7", "1", "1.3", "1.7", "2"})
        QTest::newRow(seconds) << QString::fromLatin1(seconds);
}

/// However much too early a timer fires, it is the device that does not answer.
void TestSimSilence::stuckDevice()
{
    QFETCH(QString, seconds);
    Sim device;
    QVERIFY(device.startDevice());
    device.signal(SIGSTOP);
    const Sim::Outcome outcome = Sim::run(QStringLiteral("status --timeout ") + seconds);
    QCOMPARE(outcome.code, 6);
    QCOMPARE(outcome.err, noAnswer(qPrintable(seconds), "the device"));
    device.signal(SIGCONT);
    QCOMPARE(Sim::run(QStringLiteral("status")).code, 0);
}

/// The bus tells, so nobody waits for the time-out.
void TestSimSilence::deviceThatLeaves()
{
    Sim device;
    QVERIFY(device.startDevice());
    BusMonitor monitor;
    device.signal(SIGSTOP);
    Sim status;
    status.start({QStringLiteral("status"), QStringLiteral("--timeout"), QStringLiteral("3600")});
    QVERIFY(monitor.waitFor(
        [](const BusMessage &message) { return message.member == QLatin1String("Get"); }));
    device.signal(SIGKILL);
    const Sim::Outcome outcome = status.finish();
    QCOMPARE(outcome.code, 5);
    QVERIFY(outcome.err.startsWith(QStringLiteral("govd-sim: no device is on the system bus;")));
}

QTEST_GUILESS_MAIN(TestSimSilence)
#include "tst_simsilence.moc"
