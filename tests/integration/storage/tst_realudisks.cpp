// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/facts.h"
#include "support/files.h"
#include "support/loopdevice.h"
#include "support/storagestack.h"
#include "support/waiting.h"
#include "support/watcheddaemon.h"

#include <QTest>

#include <cstdio>
#include <memory>

using namespace Support;

namespace {

/// Milliseconds. Now and then the storage service waits 20 seconds for an event of the kernel
/// before it answers.
constexpr int Patience = Deadline;

} // namespace

/// The daemon with the real UDisks2 and a real file system. A loop device is on no drive, so it
/// counts as a memory card.
///
/// Where the machine cannot give what this needs, the test fails and says so.
class TestRealUdisks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void policyTurnedOffUnmountsTheFileSystem();
    void fileSystemMountedByTheServiceIsUnmounted();
    void fileSystemMountedWhileForbiddenIsUnmounted();
    void fileSystemForbiddenSinceStartIsUnmounted();
    void deviceThatAppearsWhileForbiddenStaysUsable();
    void policyOfAnotherBusLeavesItMounted();
    void policyTurnedOnMountsNothing();
    void fileSystemInUseIsUnmountedWhenItIsFree();
    void everyMountIsUnmounted_data();
    void everyMountIsUnmounted();
    void serviceThatWasKilledIsFollowed();
    void serviceThatStartsLateIsFollowed();

private:
    std::unique_ptr<StorageStack> m_stack;
    std::unique_ptr<LoopDevice> m_loop;
};

void TestRealUdisks::initTestCase()
{
    m_stack = std::make_unique<StorageStack>();
    QVERIFY2(m_stack->failure().isEmpty(), qPrintable(m_stack->failure()));
}

void TestRealUdisks::init()
{
    Files::reset();
    m_loop = std::make_unique<LoopDevice>();
    QVERIFY2(m_loop->failure().isEmpty(), qPrintable(m_loop->failure()));
    QVERIFY2(m_stack->waitForFileSystem(m_loop->objectPath(), true),
             "UDisks2 does not hear of the loop device: the kernel's events do not get here");
}

void TestRealUdisks::cleanup()
{
    if (QTest::currentTestFailed())
        std::fputs(m_stack->log().constData(), stderr);
    const QString path = m_loop->objectPath();
    m_loop.reset();
    QVERIFY(m_stack->waitForFileSystem(path, false));
}

void TestRealUdisks::cleanupTestCase()
{
    m_stack.reset();
}

void TestRealUdisks::policyTurnedOffUnmountsTheFileSystem()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(m_loop->mount());
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    daemon.forget();
    QVERIFY(m_loop->isMounted());

    QVERIFY(daemon.change(MemoryCard, false));

    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), false));
    QCOMPARE(daemon.calls().size(), 1);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestRealUdisks::fileSystemMountedByTheServiceIsUnmounted()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(m_stack->mount(m_loop->objectPath()));
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    daemon.forget();
    QVERIFY(m_loop->isMounted());

    QVERIFY(daemon.change(MemoryCard, false));

    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestRealUdisks::fileSystemMountedWhileForbiddenIsUnmounted()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(MemoryCard, false));
    daemon.forget();

    QVERIFY(m_loop->mount());

    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
    QCOMPARE(daemon.calls().size(), 1);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestRealUdisks::fileSystemForbiddenSinceStartIsUnmounted()
{
    QVERIFY(m_loop->mount());
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    WatchedDaemon daemon;
    Files::write(PolicyFile, "[policy]\nMemoryCardEnabled=false\n");
    QVERIFY(m_loop->isMounted());

    QVERIFY(daemon.start());

    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
}

/// Nothing but the mount is taken away: the device is there for whoever may use it later.
void TestRealUdisks::deviceThatAppearsWhileForbiddenStaysUsable()
{
    cleanup();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(daemon.change(MemoryCard, false));
    init();
    QVERIFY(m_loop->mount());
    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), false));

    QVERIFY(daemon.change(MemoryCard, true));
    QVERIFY(m_loop->mount());
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));

    daemon.monitor().settle();
    QVERIFY(m_loop->isMounted());
}

void TestRealUdisks::policyOfAnotherBusLeavesItMounted()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(m_loop->mount());
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    daemon.forget();

    QVERIFY(daemon.change(UsbStorage, false));

    QCOMPARE(daemon.calls(), QStringList());
    QVERIFY(m_loop->isMounted());
}

void TestRealUdisks::policyTurnedOnMountsNothing()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(m_loop->mount());
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    daemon.forget();
    QVERIFY(daemon.change(MemoryCard, false));
    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
    daemon.forget();

    QVERIFY(daemon.change(MemoryCard, true));

    QCOMPARE(daemon.calls(), QStringList());
    QVERIFY(!m_loop->isMounted());
}

void TestRealUdisks::fileSystemInUseIsUnmountedWhenItIsFree()
{
    const QString complaint =
        QStringLiteral("warning|systemsettings|Cannot unmount \"%1\": %2")
            .arg(m_loop->node(), QStringLiteral("org.freedesktop.UDisks2.Error.DeviceBusy"));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(m_loop->mount());
    QFile file(LoopDevice::mountPoint() + QStringLiteral("/in-use"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    daemon.forget();

    QVERIFY(daemon.change(MemoryCard, false));
    QTRY_VERIFY_WITH_TIMEOUT(daemon.monitor().calls(QStringLiteral("Unmount")).size() > 1,
                             Patience);
    QCOMPARE(daemon.logged(), QStringList(complaint));
    QVERIFY(m_loop->isMounted());

    file.close();
    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
    QCOMPARE(daemon.logged(), QStringList(complaint));
}

void TestRealUdisks::everyMountIsUnmounted_data()
{
    QTest::addColumn<QString>("place");
    QTest::newRow("two places") << LoopDevice::mountPoint() + QStringLiteral("-too");
    QTest::newRow("twice in one place") << LoopDevice::mountPoint();
}

void TestRealUdisks::everyMountIsUnmounted()
{
    QFETCH(QString, place);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(m_loop->mount());
    QVERIFY(m_loop->mountAgain(place));
    QCOMPARE(m_loop->mountPoints(), QStringList({LoopDevice::mountPoint(), place}));
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    daemon.forget();

    QVERIFY(daemon.change(MemoryCard, false));

    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
    QCOMPARE(daemon.calls().size(), 2);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestRealUdisks::serviceThatWasKilledIsFollowed()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(daemon.change(MemoryCard, false));
    QVERIFY(m_stack->killStorageService());
    QVERIFY(m_loop->mount());
    QVERIFY(m_loop->isMounted());

    QVERIFY(m_stack->startStorageService());
    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);

    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), false));
    QVERIFY(m_loop->mount());
    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
}

void TestRealUdisks::serviceThatStartsLateIsFollowed()
{
    QVERIFY(m_stack->killStorageService());
    QVERIFY(m_loop->mount());
    Files::write(PolicyFile, "[policy]\nMemoryCardEnabled=false\n");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(m_loop->isMounted());

    QVERIFY(m_stack->startStorageService());
    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
}

QTEST_GUILESS_MAIN(TestRealUdisks)
#include "tst_realudisks.moc"
