// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/unit/storagetest.h"

#include <QtTest>

using namespace StorageNames;
using Simulator::Block;
using Simulator::Fault;

namespace {

const QString Busy = QStringLiteral("org.freedesktop.UDisks2.Error.DeviceBusy");

/// Milliseconds to the first reminder.
constexpr int FirstPause = 2000;

/// Unmounts what is announced as mounted, as somebody does who follows a policy.
struct Unmounter : Observed
{
    Unmounter()
    {
        QObject::connect(&manager, &PartitionManager::partitionAdded, &manager,
                         [this](const Partition &partition) {
                             if (partition.status() == Partition::Mounted)
                                 manager.unmount(partition, {});
                         });
    }
};

} // namespace

/// What could not be unmounted, or is mounted elsewhere as well, is announced again.
class tst_PartitionReminders : public StorageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void remindsAtGrowingIntervals();
    void unmountsWhatBecomesFree();
    void logsTheFirstFailureOnly();
    void remindsWhoeverWasAskedToUnmount();
    void remindsWhoKnewNothing();
    void remindsOfNothingThatIsUnmounted_data();
    void remindsOfNothingThatIsUnmounted();
    void remindsOfNothingWhileTheServiceIsGone();
    void announcesTheOtherPlacesAtOnce();
    void remindsOfASecondMountInTheSamePlace();

private:
    void refuseToUnmount() const
    {
        there([this] { m_storage->setFault(QStringLiteral("Unmount"), Fault::error(Busy)); });
    }

    void unmountAgain() const
    {
        there([this] { m_storage->clearFaults(); });
    }

    /// Waits until the library has complained that it cannot unmount the device.
    bool complains() const
    {
        QStringList lines;
        return QTest::qWaitFor([&] {
            lines += takeLog();
            return lines == m_complaint;
        });
    }

    /// A block device that is mounted in these @p places.
    Block mounted(const QStringList &places = MountPoint) const
    {
        Block block = blockDevice(places, {});
        block.id = m_name;
        return block;
    }

    QStringList placesLeft() const
    {
        return there([this] { return m_storage->blocks().value(m_path).mountPoints; });
    }

    // Reminders outlive the managers, so each test has a device of its own.
    QString m_name;
    QString m_path;
    QStringList m_complaint; ///< what the library logs when it cannot unmount the device
};

void tst_PartitionReminders::init()
{
    static int count = 0;
    StorageTest::init();
    m_name = QStringLiteral("sd%1").arg(++count);
    m_path = RootPath + QStringLiteral("/block_devices/") + m_name;
    m_complaint = QStringList(QStringLiteral("Cannot unmount \"/dev/%1\": ").arg(m_name) + Busy);
}

/// Who unmounts again in vain and who only looks on are reminded alike.
void tst_PartitionReminders::remindsAtGrowingIntervals()
{
    appear();
    Block block = mounted();
    block.drive = plug(usbStick());
    plug(block);
    refuseToUnmount();
    Observed onlooker;
    QElapsedTimer timer;
    QVector<qint64> times;
    connect(&onlooker.manager, &PartitionManager::partitionAdded, this,
            [&] { times.append(timer.restart()); });
    QTRY_COMPARE(onlooker.announced.size(), 1);
    times.clear();

    timer.start();
    Unmounter unmounter;
    QTRY_COMPARE_WITH_TIMEOUT(times.size(), 3, 60000);
    QVERIFY(times.at(0) >= FirstPause);
    QVERIFY(times.at(1) >= 2 * FirstPause);
    QVERIFY(times.at(2) >= 4 * FirstPause);
    QCOMPARE(onlooker.announcedPaths(), QStringList({m_path, m_path, m_path, m_path}));
    QCOMPARE(unmounter.announced.size(), 4);
    QCOMPARE(onlooker.announced.last().status(), Partition::Mounted);
    QCOMPARE(onlooker.announced.last().drive().value(QStringLiteral("connectionBus")), QVariant(1));
    QTRY_COMPARE(calls("Unmount"), 4);
    QCOMPARE(takeLog(), m_complaint);
}

void tst_PartitionReminders::unmountsWhatBecomesFree()
{
    appear();
    plug(mounted());
    refuseToUnmount();
    Unmounter unmounter;
    QTRY_COMPARE(calls("Unmount"), 1);
    QVERIFY(complains());
    unmountAgain();

    QTRY_COMPARE(placesLeft(), QStringList());
    QCOMPARE(calls("Unmount"), 2);
}

void tst_PartitionReminders::logsTheFirstFailureOnly()
{
    appear();
    plug(mounted());
    refuseToUnmount();
    PartitionManager manager;
    const Partition partition = manager.partitions(Any).value(0);
    manager.unmount(partition, {});
    manager.unmount(partition, {});
    PartitionManager another;
    another.partitions(Any);
    another.unmount(partition, {});
    QTRY_COMPARE(calls("Unmount"), 3);
    unmountAgain();
    manager.unmount(partition, {});
    QTRY_COMPARE(manager.partitions(Any).value(0).status(), Partition::Unmounted);
    QCOMPARE(takeLog(), m_complaint);

    refuseToUnmount();
    there([this] { m_storage->setMountPoints(m_path, MountPoint); });
    QTRY_COMPARE(manager.partitions(Any).value(0).status(), Partition::Mounted);
    manager.unmount(partition, {});
    QVERIFY(complains());
}

/// The one that was asked need not be the one that somebody follows.
void tst_PartitionReminders::remindsWhoeverWasAskedToUnmount()
{
    appear();
    plug(mounted());
    refuseToUnmount();
    Observed follower;
    QTRY_COMPARE(follower.announced.size(), 1);
    {
        PartitionManager sweeper;
        sweeper.unmount(sweeper.partitions(Any).value(0), {});
        QVERIFY(complains());
    }
    QTRY_COMPARE(follower.announced.size(), 2);
    QCOMPARE(follower.announcedPaths(), QStringList({m_path, m_path}));
}

/// A manager that could not list is reminded of a partition of which it has never heard.
void tst_PartitionReminders::remindsWhoKnewNothing()
{
    appear();
    plug(mounted());
    there([this] { m_storage->setFault(Fault::error(Busy)); });
    Observed follower;
    QTRY_COMPARE(calls("GetManagedObjects"), 1);
    unmountAgain();
    refuseToUnmount();
    PartitionManager sweeper;
    sweeper.unmount(sweeper.partitions(Any).value(0), {});
    QVERIFY(complains());
    QVERIFY(follower.announced.isEmpty());

    QTRY_COMPARE(follower.announcedPaths(), QStringList(m_path));
    QCOMPARE(calls("GetManagedObjects"), 3);
}

void tst_PartitionReminders::remindsOfNothingThatIsUnmounted_data()
{
    QTest::addColumn<bool>("isPulledOut");
    QTest::newRow("unmounted") << false;
    QTest::newRow("pulled out") << true;
}

/// A second partition, which fails later, tells when a reminder would have come.
void tst_PartitionReminders::remindsOfNothingThatIsUnmounted()
{
    QFETCH(bool, isPulledOut);
    appear();
    plug(mounted());
    const QString clock =
        plug(Block{QStringLiteral("clock") + m_name, {}, false, true, false, MountPoint});
    refuseToUnmount();
    Observed observed;
    QTRY_COMPARE(observed.announced.size(), 2);
    for (const Partition &partition : observed.manager.partitions(Any)) {
        observed.manager.unmount(partition, {});
        QVERIFY(QTest::qWaitFor([] { return !takeLog().isEmpty(); }));
    }
    observed.announced.clear();

    there([&] {
        if (isPulledOut)
            m_storage->unplug(m_path);
        else
            m_storage->setMountPoints(m_path, {});
    });
    QTRY_COMPARE(observed.announcedPaths(), QStringList(clock));
}

void tst_PartitionReminders::remindsOfNothingWhileTheServiceIsGone()
{
    appear();
    plug(mounted());
    refuseToUnmount();
    Unmounter unmounter;
    QVERIFY(complains());
    there([this] { m_storage->leave(); });
    QTRY_VERIFY(unmounter.manager.partitions(Any).isEmpty());
    QCOMPARE(unmounter.announced.size(), 1);

    unmountAgain();
    appear();
    QTRY_COMPARE(placesLeft(), QStringList());
    QCOMPARE(calls("Unmount"), 2);
}

void tst_PartitionReminders::announcesTheOtherPlacesAtOnce()
{
    const QStringList three{QStringLiteral("/a"), QStringLiteral("/b"), QStringLiteral("/c")};
    appear();
    plug(mounted(three));
    Unmounter unmounter;
    QElapsedTimer timer;
    timer.start();
    QTRY_COMPARE(placesLeft(), QStringList());
    QVERIFY(timer.elapsed() < FirstPause);
    QCOMPARE(calls("Unmount"), 3);
    QCOMPARE(unmounter.announcedPaths(), QStringList({m_path, m_path, m_path}));
    QVERIFY(passSentinel(unmounter));
    QCOMPARE(unmounter.announced.size(), 3);
}

/// The service has nothing to tell of one mount less, because it tells each place once.
void tst_PartitionReminders::remindsOfASecondMountInTheSamePlace()
{
    appear();
    plug(mounted(MountPoint + MountPoint));
    Unmounter unmounter;
    QTRY_COMPARE(placesLeft(), MountPoint);
    QTRY_COMPARE(placesLeft(), QStringList());
    QCOMPARE(calls("Unmount"), 2);
    QCOMPARE(unmounter.announced.size(), 2);
}

QTEST_GUILESS_MAIN(tst_PartitionReminders)
#include "tst_partitionreminders.moc"
