// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/stick.h"
#include "support/switchplugin.h"
#include "support/watcheddaemon.h"

#include <QTest>

using Simulator::Storage;
using namespace Support;

/// Switches and locks that forbid storage.
class TestStorageSwitches : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void switchTurnedOffSweeps();
    void switchTurnedOnMountsNothing();
    void storageAppearingWithoutItsSwitchIsUnmounted();
    void storageAppearingWhileLockedIsUnmounted();
    void lockSweepsNothing();
    void storageIsSweptAtStart_data();
    void storageIsSweptAtStart();

private:
    std::unique_ptr<Neighbour<Storage>> m_storage;
};

void TestStorageSwitches::init()
{
    Files::reset();
    m_storage = std::make_unique<Neighbour<Storage>>();
    m_storage->appear();
}

void TestStorageSwitches::switchTurnedOffSweeps()
{
    SwitchPlugin switches;
    switches.setSwitch(QStringLiteral("storage"), {33}, true);
    const Stick stick;
    stick.plug(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    switches.announce(QStringLiteral("storage"), false);

    QCOMPARE(daemon.calls(), QStringList(stick.unmountOrder()));
    QTRY_VERIFY(!stick.isMountedIn(*m_storage));
}

void TestStorageSwitches::switchTurnedOnMountsNothing()
{
    SwitchPlugin switches;
    switches.setSwitch(QStringLiteral("storage"), {33}, false);
    const Stick stick{QStringLiteral("stick"), QStringLiteral("usb"), false, false, false};
    stick.plug(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    switches.setEntry(QStringLiteral("storage"), QStringLiteral("value"), true);
    switches.announce(QStringLiteral("storage"), true);

    QCOMPARE(daemon.calls(), QStringList());
}

void TestStorageSwitches::storageAppearingWithoutItsSwitchIsUnmounted()
{
    SwitchPlugin switches;
    switches.setSwitch(QStringLiteral("storage"), {33}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    switches.setEntry(QStringLiteral("storage"), QStringLiteral("value"), false);
    daemon.forget();
    const Stick stick;
    const Stick card{QStringLiteral("card"), QStringLiteral("sdio"), false, true, false};

    stick.plug(*m_storage);
    card.plug(*m_storage);

    QCOMPARE(daemon.calls(), QStringList(stick.unmountOrder()));
}

void TestStorageSwitches::storageAppearingWhileLockedIsUnmounted()
{
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {MemoryCard});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    lock.setLocked({MemoryCard});
    daemon.forget();
    const Stick stick;
    const Stick card{QStringLiteral("card"), QStringLiteral("sdio"), false, true, false};

    stick.plug(*m_storage);
    card.plug(*m_storage);

    QCOMPARE(daemon.calls(), QStringList(card.unmountOrder()));
}

/// A lock changes what readers see, not what is in force: what is mounted stays.
void TestStorageSwitches::lockSweepsNothing()
{
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {UsbStorage});
    const Stick stick;
    stick.plug(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    lock.setLocked({UsbStorage});
    lock.announce(UsbStorage, true);

    QCOMPARE(daemon.announcements().size(), 1);
    QCOMPARE(daemon.calls(), QStringList());
    QVERIFY(stick.isMountedIn(*m_storage));
}

void TestStorageSwitches::storageIsSweptAtStart_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<bool>("isSwitchOn");
    QTest::addColumn<bool>("isLocked");
    QTest::addColumn<int>("sweeps");
    QTest::newRow("allowed") << QByteArray("true") << true << false << 0;
    QTest::newRow("forbidden") << QByteArray("false") << true << false << 2;
    QTest::newRow("switch off") << QByteArray("true") << false << false << 2;
    QTest::newRow("locked") << QByteArray("true") << true << true << 1;
}

/// Each enforcement looks, and there are two at start, but one of a locked policy, which cannot be
/// stored. The second comes before the daemon can hear that the first order has been carried out;
/// nothing is left to unmount for whoever looks later.
void TestStorageSwitches::storageIsSweptAtStart()
{
    QFETCH(QByteArray, stored);
    QFETCH(bool, isSwitchOn);
    QFETCH(bool, isLocked);
    QFETCH(int, sweeps);
    SwitchPlugin switches;
    switches.setSwitch(QStringLiteral("storage"), {33}, isSwitchOn);
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {UsbStorage});
    lock.setLocked(isLocked ? QStringList(UsbStorage) : QStringList());
    const Stick stick;
    stick.plug(*m_storage);
    const Stick card{QStringLiteral("card"), QStringLiteral("sdio"), false, true, false};
    card.plug(*m_storage);
    WatchedDaemon daemon;
    Files::write(PolicyFile, "[policy]\nUsbStorageEnabled=" + stored + '\n');
    QVERIFY(daemon.startObserved());

    QTRY_COMPARE(daemon.monitor().calls(QStringLiteral("GetManagedObjects")).size(), 2);
    daemon.monitor().settle();
    const QStringList orders = daemon.calls(m_storage->name());
    QCOMPARE(orders.size(), sweeps);
    QCOMPARE(orders.count(stick.unmountOrder()), sweeps);
    QTRY_COMPARE(stick.isMountedIn(*m_storage), sweeps == 0);
    QVERIFY(card.isMountedIn(*m_storage));
}

QTEST_GUILESS_MAIN(TestStorageSwitches)
#include "tst_storageswitches.moc"
