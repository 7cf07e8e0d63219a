// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/bus.h"
#include "support/busmonitor.h"
#include "support/caller.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/mount.h"
#include "support/systemlog.h"

#include <QDBusVariant>
#include <QtTest>

#include <syslog.h>

using namespace Support;

namespace {

const QString Service = QStringLiteral("org.kvt.PolicyManager");
const QString Camera = QStringLiteral("CameraEnabled");

} // namespace

/// The tools of the other tests. What cannot fail here would prove nothing there.
class TestHarness : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void busLosesItsConnectionsAndComesBack();
    void busTellsOwnersOfNames();
    void monitorSeesMessagesInOrder();
    void monitorTellsThatNothingHappened();
    void settlingWaitsForTheDaemon();
    void systemLogTakesLines();
    void systemLogIsAbsentWithoutListener();
    void filesTellWhetherTheyWereWritten();
    void disksCanBeFullOrReadOnly();
    void daemonLogIsSeen();
    void daemonCanBeWrapped();
    void daemonCanBeKilledAndStartedAgain();
};

void TestHarness::init()
{
    Files::reset();
}

void TestHarness::busLosesItsConnectionsAndComesBack()
{
    Bus bus;
    QDBusConnection connection = bus.connect();
    QVERIFY(connection.isConnected());

    bus.stop();
    QVERIFY(!bus.isRunning());
    QTRY_VERIFY(!connection.isConnected());
    QVERIFY(!bus.connect().isConnected());

    bus.start();
    QVERIFY(bus.isRunning());
    QVERIFY(bus.connect().isConnected());
}

void TestHarness::busTellsOwnersOfNames()
{
    Bus bus;
    const QString name = QStringLiteral("org.govd.test.Name");
    QVERIFY(!bus.hasOwner(name));
    QCOMPARE(bus.ownerProcess(name), 0);

    QDBusConnection connection = bus.connect();
    QVERIFY(connection.registerService(name));
    QVERIFY(bus.waitForOwner(name));
    QCOMPARE(bus.ownerProcess(name), QCoreApplication::applicationPid());

    QVERIFY(connection.unregisterService(name));
    QVERIFY(bus.waitForNoOwner(name));
}

void TestHarness::monitorSeesMessagesInOrder()
{
    BusMonitor monitor;
    Bus bus;
    QDBusConnection connection = bus.connect();
    for (int i = 0; i < 100; ++i) {
        QDBusMessage message = QDBusMessage::createSignal(
            QStringLiteral("/"), QStringLiteral("org.govd.test"), QStringLiteral("Number"));
        message.setArguments({i, QVariant::fromValue(QDBusVariant(i % 2 == 0))});
        connection.send(message);
    }
    monitor.settleBus();

    const QVector<BusMessage> messages = monitor.announcements(QStringLiteral("Number"));
    QCOMPARE(messages.size(), 100);
    for (int i = 0; i < 100; ++i)
        QCOMPARE(messages.at(i).arguments, (QVariantList{i, i % 2 == 0}));
    QCOMPARE(messages.first().signature, QStringLiteral("iv"));
    QCOMPARE(messages.first().sender, connection.baseService());
}

void TestHarness::monitorTellsThatNothingHappened()
{
    Daemon daemon;
    BusMonitor monitor;
    QVERIFY(daemon.start());
    const QString unique = monitor.uniqueName(Service);
    QVERIFY(unique.startsWith(QLatin1Char(':')));

    // A change by root asks for the process twice, and announces itself once.
    monitor.clear();
    QCOMPARE(Caller().setPolicy(Camera, false).value(), QVariant(true));
    monitor.settle();
    QCOMPARE(monitor.calls(QStringLiteral("GetConnectionUnixProcessID"), unique).size(), 2);
    QCOMPARE(monitor.calls(QStringLiteral("GetConnectionUnixUser"), unique).size(), 0);
    QCOMPARE(monitor.announcements(QStringLiteral("PolicyChanged")).size(), 1);

    // Of the bus itself every question is seen, its answer too.
    const BusMessage call = monitor.calls(QStringLiteral("SetKeyValue")).value(0);
    const QVector<BusMessage> answers =
        monitor.messages([&](const BusMessage &message) { return message.answers(call); });
    QCOMPARE(answers.size(), 1);
    QCOMPARE(answers.first().arguments, QVariantList{true});

    monitor.clear();
    monitor.settle();
    QCOMPARE(monitor.announcements(QStringLiteral("PolicyChanged")).size(), 0);
}

void TestHarness::settlingWaitsForTheDaemon()
{
    Daemon daemon;
    BusMonitor monitor;
    QVERIFY(daemon.start());
    daemon.pause();
    Caller caller;
    caller.send(QStringLiteral("Policy"), QStringLiteral("SetKeyValue"),
                {Camera, QVariant::fromValue(QDBusVariant(false))});

    // However late the daemon gets to it, it is not forgotten.
    QTimer::singleShot(100, [&daemon] { daemon.resume(); });
    monitor.settle();
    QCOMPARE(monitor.announcements(QStringLiteral("PolicyChanged")).size(), 1);
}

void TestHarness::systemLogTakesLines()
{
    SystemLog log;
    syslog(LOG_INFO, "Policy %s changed: %d", "x", 1);
    syslog(LOG_DAEMON | LOG_WARNING, "colons: and [brackets]");
    for (int i = 0; i < 500; ++i)
        syslog(LOG_INFO, "many");
    QVERIFY(log.waitForLine(QStringLiteral("x changed")));
    log.settle();

    const QVector<SystemLogLine> lines = log.lines();
    QCOMPARE(lines.size(), 502);
    QCOMPARE(lines.at(0).priority, LOG_USER | LOG_INFO);
    QCOMPARE(lines.at(0).program, QStringLiteral("tst_harness"));
    QCOMPARE(lines.at(0).text, QStringLiteral("Policy x changed: 1"));
    QCOMPARE(lines.at(1).priority, LOG_DAEMON | LOG_WARNING);
    QCOMPARE(lines.at(1).text, QStringLiteral("colons: and [brackets]"));
    QCOMPARE(log.mark(), 502);

    log.settle();
    QCOMPARE(log.lines(502).size(), 0);
}

void TestHarness::systemLogIsAbsentWithoutListener()
{
    QVERIFY(!QFile::exists(QStringLiteral("/dev/log")));
    {
        const SystemLog log;
        QVERIFY(QFile::exists(QStringLiteral("/dev/log")));
    }
    QVERIFY(!QFile::exists(QStringLiteral("/dev/log")));
}

void TestHarness::filesTellWhetherTheyWereWritten()
{
    const QString path = QStringLiteral("/etc/policy/policy.d/a.conf");
    QCOMPARE(Files::snapshot(path), FileSnapshot());
    Files::write(path, "# comment\n[other]\nA=1\n[policy]\nB=true\nC=a=b\n");
    QCOMPARE(Files::values(path),
             (QMap<QString, QString>{{QStringLiteral("B"), QStringLiteral("true")},
                                     {QStringLiteral("C"), QStringLiteral("a=b")}}));

    const FileSnapshot before = Files::snapshot(path);
    QVERIFY(before.exists);
    QVERIFY(Files::snapshot(path) == before);
    const QByteArray content = Files::read(path);
    QVERIFY(QFile::remove(path));
    Files::write(path + QStringLiteral(".other"), content);
    Files::write(path, content);
    QVERIFY(Files::snapshot(path) != before);

    Files::reset();
    QVERIFY(!Files::snapshot(path).exists);
    QVERIFY(QFile::exists(QStringLiteral("/etc/policy")));
}

void TestHarness::disksCanBeFullOrReadOnly()
{
    const QString directory = QStringLiteral("/etc/policy");
    const QString path = directory + QStringLiteral("/file");
    Files::write(path, "content");
    {
        const Mount mount = Mount::readOnly(directory);
        QCOMPARE(Files::read(path), QByteArray("content"));
        QVERIFY(!QFile(path).open(QIODevice::WriteOnly));
    }
    {
        const Mount mount = Mount::small(directory, 4096);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QCOMPARE(file.write(QByteArray(8192, 'x')), 4096);
    }
    QCOMPARE(Files::read(path), QByteArray("content"));
    Files::write(path, "again");
}

void TestHarness::daemonLogIsSeen()
{
    Bus bus;
    QDBusConnection thief = bus.connect();
    QVERIFY(thief.registerService(Service));

    Daemon daemon;
    QVERIFY(!daemon.start());
    QCOMPARE(daemon.waitForExit(), 1);
    QCOMPARE(daemon.log().filter(QRegularExpression(QStringLiteral("^critical\\|"))).size(), 1);
    QVERIFY(daemon.waitForLog(QStringLiteral("critical|default|")));
    QCOMPARE(daemon.log(daemon.mark()), QStringList());
}

void TestHarness::daemonCanBeWrapped()
{
    Daemon daemon;
    const QString trace = QStringLiteral("/tmp/trace");
    daemon.setWrapper({QStringLiteral("strace"), QStringLiteral("-f"), QStringLiteral("-o"), trace,
                       QStringLiteral("-e"), QStringLiteral("trace=%file")});
    daemon.setEnvironment(QStringLiteral("QT_HASH_SEED"), QStringLiteral("0"));
    QVERIFY(daemon.start());
    const QString process = QStringLiteral("/proc/%1/").arg(daemon.processId());
    QCOMPARE(QFile::symLinkTarget(process + QStringLiteral("exe")),
             QStringLiteral("/usr/sbin/govd"));
    QVERIFY(Files::read(process + QStringLiteral("environ")).contains("QT_HASH_SEED=0"));
    QCOMPARE(daemon.stop(), 0);
    QVERIFY(Files::read(trace).contains("/etc/policy/policy.conf"));
}

void TestHarness::daemonCanBeKilledAndStartedAgain()
{
    Bus bus;
    Daemon daemon;
    QVERIFY(daemon.start());
    const qint64 first = daemon.processId();
    daemon.kill();
    QVERIFY(!daemon.isRunning());
    QCOMPARE(daemon.processId(), 0);
    QCOMPARE(daemon.waitForExit(), -1);

    QVERIFY(daemon.start());
    QVERIFY(daemon.processId() != first);
    QCOMPARE(bus.ownerProcess(Service), daemon.processId());
    QCOMPARE(daemon.stop(), 0);
    QVERIFY(bus.waitForNoOwner(Service));
}

QTEST_GUILESS_MAIN(TestHarness)
#include "tst_harness.moc"
