// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/facts.h"
#include "support/files.h"
#include "support/storagestack.h"
#include "support/upperdevice.h"
#include "support/waiting.h"
#include "support/watcheddaemon.h"

#include <QTest>

#include <cstdio>

using namespace Support;

/// The daemon with the real UDisks2 and devices with more than a file system: with partitions, or
/// with another device built on them.
///
/// Where the machine cannot give what this needs, the test fails and says so.
class TestRealDevices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { Files::reset(); }
    void cleanup();
    void cleanupTestCase() { m_stack.reset(); }

    void partitionsOfOneDeviceAreUnmounted();
    void upperDeviceMountedBeforeIsUnmounted();
    void upperDeviceMountedWhileForbiddenIsUnmounted();
    void upperDeviceOfUpperDeviceIsUnmounted();
    void upperDeviceOfTheSystemStaysMounted();

private:
    std::unique_ptr<StorageStack> m_stack;
};

void TestRealDevices::initTestCase()
{
    m_stack = std::make_unique<StorageStack>();
    QVERIFY2(m_stack->failure().isEmpty(), qPrintable(m_stack->failure()));
}

void TestRealDevices::cleanup()
{
    if (QTest::currentTestFailed())
        std::fputs(m_stack->log().constData(), stderr);
}

void TestRealDevices::partitionsOfOneDeviceAreUnmounted()
{
    const LoopDevice disk(LoopDevice::TwoPartitions);
    QVERIFY2(disk.failure().isEmpty(), qPrintable(disk.failure()));
    const BlockDevice first(disk.partitionName(1));
    const BlockDevice second(disk.partitionName(2));
    QVERIFY(m_stack->waitForFileSystem(first.objectPath(), true));
    QVERIFY(m_stack->waitForFileSystem(second.objectPath(), true));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(first.mount());
    QVERIFY(m_stack->waitForMounted(first.objectPath(), true));
    daemon.forget();

    QVERIFY(daemon.change(MemoryCard, false));
    QTRY_VERIFY_WITH_TIMEOUT(!first.isMounted(), Deadline);

    QVERIFY(second.mount());
    QTRY_VERIFY_WITH_TIMEOUT(!second.isMounted(), Deadline);
    QCOMPARE(daemon.calls().size(), 2);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestRealDevices::upperDeviceMountedBeforeIsUnmounted()
{
    const LoopDevice lower;
    const UpperDevice upper(&lower);
    QVERIFY2(upper.failure().isEmpty(), qPrintable(upper.failure()));
    QVERIFY(m_stack->waitForFileSystem(upper.objectPath(), true));
    QVERIFY(upper.mount());
    QVERIFY(m_stack->waitForMounted(upper.objectPath(), true));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(MemoryCard, false));

    QTRY_VERIFY_WITH_TIMEOUT(!upper.isMounted(), Deadline);
    QCOMPARE(daemon.calls().size(), 1);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestRealDevices::upperDeviceMountedWhileForbiddenIsUnmounted()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(daemon.change(MemoryCard, false));
    daemon.forget();

    const LoopDevice lower;
    const UpperDevice upper(&lower);
    QVERIFY2(upper.failure().isEmpty(), qPrintable(upper.failure()));
    QVERIFY(m_stack->waitForFileSystem(upper.objectPath(), true));
    QVERIFY(upper.mount());

    QTRY_VERIFY_WITH_TIMEOUT(!upper.isMounted(), Deadline);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestRealDevices::upperDeviceOfUpperDeviceIsUnmounted()
{
    const LoopDevice lower;
    const UpperDevice middle(&lower);
    const UpperDevice upper(&middle);
    QVERIFY2(upper.failure().isEmpty(), qPrintable(upper.failure()));
    QVERIFY(m_stack->waitForFileSystem(upper.objectPath(), true));
    QVERIFY(upper.mount());
    QVERIFY(m_stack->waitForMounted(upper.objectPath(), true));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(MemoryCard, false));

    QTRY_VERIFY_WITH_TIMEOUT(!upper.isMounted(), Deadline);
}

/// The same without the link by which the kernel tells what it is built on: it is what makes the
/// difference.
void TestRealDevices::upperDeviceOfTheSystemStaysMounted()
{
    const LoopDevice lower;
    UpperDevice upper(&lower);
    QVERIFY2(upper.failure().isEmpty(), qPrintable(upper.failure()));
    upper.forgetLower();
    QVERIFY(m_stack->waitForFileSystem(upper.objectPath(), true));
    QVERIFY(upper.mount());
    QVERIFY(m_stack->waitForMounted(upper.objectPath(), true));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    daemon.forget();

    QVERIFY(daemon.change(MemoryCard, false));

    QCOMPARE(daemon.calls(), QStringList());
    QVERIFY(upper.isMounted());
}

QTEST_GUILESS_MAIN(TestRealDevices)
#include "tst_realdevices.moc"
