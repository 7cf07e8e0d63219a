// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/bus.h"
#include "support/busmonitor.h"
#include "support/caller.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"

#include <QtTest>

#include <signal.h>

using namespace Support;

namespace {

/// Enforced at start, and once more before registration, while the neighbour is not there.
const QString UsbFailure =
    QStringLiteral("warning|default|Failed to disable USB devices connection.");
const QStringList Enforced = {UsbFailure, UsbFailure};

} // namespace

/// The daemon comes and goes: registration, exit codes, and what stands in the log about them.
class TestStartup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void ownsItsNameAndEndsInOrder_data();
    void ownsItsNameAndEndsInOrder();
    void endsInOrderWhateverTheEventLoopReturns();
    void servesFromTheMomentItsNameIsSeen();
    void secondInstanceFails();
    void failsWithoutBus();
    void endsWhenTheBusIsLost();
};

void TestStartup::init()
{
    Files::reset();
}

void TestStartup::ownsItsNameAndEndsInOrder_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void TestStartup::ownsItsNameAndEndsInOrder()
{
    QFETCH(const int, signal);
    Bus bus;
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(bus.ownerProcess(Service), daemon.processId());

    QCOMPARE(kill(static_cast<pid_t>(daemon.processId()), signal), 0);
    QCOMPARE(daemon.waitForExit(), 0);
    QVERIFY(bus.waitForNoOwner(Service));
    QCOMPARE(daemon.log(), Enforced);
}

void TestStartup::endsInOrderWhateverTheEventLoopReturns()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"));
    Daemon daemon;
    QVERIFY(daemon.start());
    plugin.endEventLoop(3);
    QCOMPARE(daemon.waitForExit(), 0);
}

void TestStartup::servesFromTheMomentItsNameIsSeen()
{
    // All values are on disk and enforced before the name is there.
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::exists(CameraMarker));
    QCOMPARE(Files::values(PolicyFile).size(), 46);
    QCOMPARE(Caller().policy(QStringLiteral("CameraEnabled")).value(), QVariant(true));
}

void TestStartup::secondInstanceFails()
{
    Daemon first;
    QVERIFY(first.start());
    const FileSnapshot before = Files::snapshot(PolicyFile);

    Daemon second;
    QVERIFY(!second.start());
    QCOMPARE(second.waitForExit(), 1);
    // It enforces before it finds the name taken, for which the bus library has no text.
    QCOMPARE(second.log(), Enforced + QStringList{QStringLiteral("critical|default|\"\"")});

    // It has recorded everything once more by then, and hurt nobody.
    QVERIFY(Files::snapshot(PolicyFile) != before);
    QCOMPARE(Caller().policy(QStringLiteral("CameraEnabled")).value(), QVariant(true));
    QCOMPARE(first.stop(), 0);
}

void TestStartup::failsWithoutBus()
{
    Bus bus;
    bus.stop();
    Daemon daemon;
    QVERIFY(!daemon.start());
    QCOMPARE(daemon.waitForExit(), 1);
    const QStringList critical =
        daemon.log().filter(QRegularExpression(QStringLiteral("^critical\\|default\\|\".+\"$")));
    QCOMPARE(critical.size(), 1);
    QVERIFY(QFile::exists(PolicyFile));
}

void TestStartup::endsWhenTheBusIsLost()
{
    Bus bus;
    Daemon daemon;
    QVERIFY(daemon.start());
    // An answer shows that it has begun to serve, and waits for nobody.
    QVERIFY(Caller().policy(QStringLiteral("CameraEnabled")).arrived);
    bus.stop();
    QCOMPARE(daemon.waitForExit(), 0);

    bus.start();
    QVERIFY(daemon.start());
}

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
