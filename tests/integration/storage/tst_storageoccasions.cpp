// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/facts.h"
#include "support/files.h"
#include "support/stick.h"
#include "support/watcheddaemon.h"

#include <QTest>

using Simulator::Storage;
using namespace Support;

/// When storage is unmounted. Which storage is in tst_storagerules.
class TestStorageOccasions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void allowingMountsNothing();
    void storageMountedLaterIsUnmounted_data();
    void storageMountedLaterIsUnmounted();
    void storageMountedAgainIsUnmountedAgain();
    void fileSystemMadeLaterIsSeen();
    void storageWithoutItsDriveWaitsForIt();
    void onlyForbiddenOnesOfManyAreUnmounted();
    void deviceWithAPartitionTableIsNotSwept();
    void storageThatWasPulledOutIsForgotten();
    void sameValueSweepsNothing();

private:
    std::unique_ptr<Neighbour<Storage>> m_storage;
};

void TestStorageOccasions::init()
{
    Files::reset();
    m_storage = std::make_unique<Neighbour<Storage>>();
    m_storage->appear();
}

void TestStorageOccasions::allowingMountsNothing()
{
    const Stick stick;
    stick.plug(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(UsbStorage, false));
    QTRY_VERIFY(!stick.isMountedIn(*m_storage));
    daemon.forget();

    QVERIFY(daemon.change(UsbStorage, true));

    QCOMPARE(daemon.calls(), QStringList());
    QVERIFY(!stick.isMountedIn(*m_storage));
    stick.mount(*m_storage);
    QCOMPARE(daemon.calls(), QStringList());
}

void TestStorageOccasions::storageMountedLaterIsUnmounted_data()
{
    QTest::addColumn<bool>("tellsMountPoints");
    QTest::newRow("told where") << true;
    QTest::newRow("told that it changed") << false;
}

void TestStorageOccasions::storageMountedLaterIsUnmounted()
{
    QFETCH(bool, tellsMountPoints);
    const Stick stick{QStringLiteral("stick"), QStringLiteral("usb"), false, false, false};
    stick.plug(*m_storage);
    m_storage->ask([=](Storage &service) { service.setTellsMountPoints(tellsMountPoints); });
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(daemon.change(UsbStorage, false));
    QCOMPARE(daemon.calls(m_storage->name()), QStringList());

    stick.mount(*m_storage);

    QVERIFY(daemon.monitor().waitFor(
        [](const BusMessage &message) { return message.isCallOf(QStringLiteral("Unmount")); }));
    QTRY_VERIFY(!stick.isMountedIn(*m_storage));
    QCOMPARE(daemon.calls(m_storage->name()), QStringList(stick.unmountOrder()));
}

void TestStorageOccasions::storageMountedAgainIsUnmountedAgain()
{
    const Stick stick;
    stick.plug(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(daemon.change(UsbStorage, false));

    for (int times = 1; times <= 3; ++times) {
        QTRY_VERIFY(!stick.isMountedIn(*m_storage));
        QCOMPARE(daemon.calls(m_storage->name()).size(), times);
        stick.mount(*m_storage);
    }
}

void TestStorageOccasions::fileSystemMadeLaterIsSeen()
{
    Stick stick;
    stick.isMounted = false;
    stick.plug(*m_storage);
    m_storage->ask([&](Storage &service) { service.setFilesystem(stick.path(), false); });
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(UsbStorage, false));
    daemon.forget();

    m_storage->ask([&](Storage &service) { service.setFilesystem(stick.path(), true); });
    QCOMPARE(daemon.calls(), QStringList());
    stick.mount(*m_storage);

    QCOMPARE(daemon.calls(), QStringList(stick.unmountOrder()));
}

/// Without its drive nobody can tell whether it is a memory card.
void TestStorageOccasions::storageWithoutItsDriveWaitsForIt()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(MemoryCard, false));
    QVERIFY(daemon.change(UsbStorage, false));
    daemon.forget();
    const Stick stick;
    m_storage->ask([&](Storage &service) {
        Simulator::Block block;
        block.id = stick.id;
        block.drive = QStringLiteral("/org/freedesktop/UDisks2/drives/late");
        block.mountPoints = QStringList(stick.mountPoint());
        service.plug(block);
    });
    QCOMPARE(daemon.calls(), QStringList());
    QVERIFY(daemon.change(MemoryCard, true));

    m_storage->ask([](Storage &service) {
        Simulator::Drive drive;
        drive.id = QStringLiteral("late");
        drive.connectionBus = QStringLiteral("usb");
        service.plug(drive);
    });

    QCOMPARE(daemon.calls(), QStringList(stick.unmountOrder()));
}

void TestStorageOccasions::onlyForbiddenOnesOfManyAreUnmounted()
{
    const QString usb = QStringLiteral("usb");
    const QString sdio = QStringLiteral("sdio");
    const QVector<Stick> sticks{
        {QStringLiteral("a"), usb, false, true, false},
        {QStringLiteral("b"), sdio, false, true, false},
        {QStringLiteral("c"), usb, true, true, false},
        {QStringLiteral("d"), usb, false, false, false},
        {QStringLiteral("e"), usb, false, true, false},
        {QStringLiteral("f"), QStringLiteral("none"), false, true, false},
    };
    for (const Stick &stick : sticks)
        stick.plug(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(UsbStorage, false));
    QCOMPARE(daemon.calls(),
             QStringList({sticks.at(0).unmountOrder(), sticks.at(4).unmountOrder()}));

    daemon.forget();
    QVERIFY(daemon.change(MemoryCard, false));
    QCOMPARE(daemon.calls(),
             QStringList({sticks.at(1).unmountOrder(), sticks.at(5).unmountOrder()}));
}

void TestStorageOccasions::deviceWithAPartitionTableIsNotSwept()
{
    Stick stick;
    stick.hasPartitionTable = true;
    stick.plug(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(UsbStorage, false));

    QCOMPARE(daemon.calls(), QStringList());
    QVERIFY(stick.isMountedIn(*m_storage));
}

void TestStorageOccasions::storageThatWasPulledOutIsForgotten()
{
    const Stick stick;
    stick.plug(*m_storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    m_storage->ask([&](Storage &service) { service.unplug(stick.path()); });
    daemon.forget();

    QVERIFY(daemon.change(UsbStorage, false));
    QCOMPARE(daemon.calls(), QStringList());

    stick.plug(*m_storage);
    QCOMPARE(daemon.calls(), QStringList(stick.unmountOrder()));
}

void TestStorageOccasions::sameValueSweepsNothing()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(UsbStorage, false));
    // It stays mounted, and nothing reminds the daemon of it.
    m_storage->fail(QStringLiteral("Unmount"), Simulator::Fault::silence());
    const Stick stick;
    stick.plug(*m_storage);
    daemon.forget();

    QVERIFY(daemon.change(UsbStorage, false));

    QCOMPARE(daemon.calls(), QStringList());
}

QTEST_GUILESS_MAIN(TestStorageOccasions)
#include "tst_storageoccasions.moc"
