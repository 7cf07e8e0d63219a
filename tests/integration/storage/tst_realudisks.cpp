// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/enforcement.h"
#include "support/files.h"
#include "support/loopdevice.h"
#include "support/storagestack.h"
#include "support/waiting.h"

#include <QTest>

#include <cstdio>
#include <memory>

using Support::Enforcement;
using Support::LoopDevice;
using Support::StorageStack;

namespace {

const QString MemoryCard = QStringLiteral("MemoryCardEnabled");
const QString UsbStorage = QStringLiteral("UsbStorageEnabled");

/// Milliseconds. Now and then the storage service waits 20 seconds for an event of the kernel
/// before it answers.
constexpr int Patience = Support::Deadline;

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
    void fileSystemInUseStaysMountedSilently();

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
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(m_loop->mount());
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    device.forget();
    QVERIFY(m_loop->isMounted());

    QVERIFY(device.change(MemoryCard, false));

    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), false));
    QCOMPARE(device.calls().size(), 1);
    QCOMPARE(device.log(), QStringList());
}

void TestRealUdisks::fileSystemMountedByTheServiceIsUnmounted()
{
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(m_stack->mount(m_loop->objectPath()));
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    device.forget();
    QVERIFY(m_loop->isMounted());

    QVERIFY(device.change(MemoryCard, false));

    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
    QCOMPARE(device.log(), QStringList());
}

void TestRealUdisks::fileSystemMountedWhileForbiddenIsUnmounted()
{
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(device.change(MemoryCard, false));
    device.forget();

    QVERIFY(m_loop->mount());

    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
    QCOMPARE(device.calls().size(), 1);
    QCOMPARE(device.log(), QStringList());
}

void TestRealUdisks::fileSystemForbiddenSinceStartIsUnmounted()
{
    QVERIFY(m_loop->mount());
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    Enforcement device;
    Support::Files::write(QStringLiteral("/etc/policy/policy.conf"),
                          "[policy]\nMemoryCardEnabled=false\n");
    QVERIFY(m_loop->isMounted());

    QVERIFY(device.start());

    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
}

/// Nothing but the mount is taken away: the device is there for whoever may use it later.
void TestRealUdisks::deviceThatAppearsWhileForbiddenStaysUsable()
{
    cleanup();
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(device.change(MemoryCard, false));
    init();
    QVERIFY(m_loop->mount());
    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), false));

    QVERIFY(device.change(MemoryCard, true));
    QVERIFY(m_loop->mount());
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));

    device.monitor().settle();
    QVERIFY(m_loop->isMounted());
}

void TestRealUdisks::policyOfAnotherBusLeavesItMounted()
{
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(m_loop->mount());
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    device.forget();

    QVERIFY(device.change(UsbStorage, false));

    QCOMPARE(device.calls(), QStringList());
    QVERIFY(m_loop->isMounted());
}

void TestRealUdisks::policyTurnedOnMountsNothing()
{
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(m_loop->mount());
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    device.forget();
    QVERIFY(device.change(MemoryCard, false));
    QTRY_VERIFY_WITH_TIMEOUT(!m_loop->isMounted(), Patience);
    device.forget();

    QVERIFY(device.change(MemoryCard, true));

    QCOMPARE(device.calls(), QStringList());
    QVERIFY(!m_loop->isMounted());
}

void TestRealUdisks::fileSystemInUseStaysMountedSilently()
{
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(m_loop->mount());
    QFile file(LoopDevice::mountPoint() + QStringLiteral("/in-use"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(m_stack->waitForMounted(m_loop->objectPath(), true));
    device.forget();

    QVERIFY(device.change(MemoryCard, false));

    QVERIFY(device.monitor().waitFor([](const Support::BusMessage &message) {
        return message.errorName == QStringLiteral("org.freedesktop.UDisks2.Error.DeviceBusy");
    }));
    QCOMPARE(device.log(), QStringList());
    QVERIFY(m_loop->isMounted());
}

QTEST_GUILESS_MAIN(TestRealUdisks)
#include "tst_realudisks.moc"
