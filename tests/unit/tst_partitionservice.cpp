// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/unit/storagetest.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QtTest>

using namespace StorageNames;
using Simulator::Fault;

class tst_PartitionService : public StorageTest
{
    Q_OBJECT

private Q_SLOTS:
    void staysQuietWithoutTheService();
    void startsNoService();
    void followsTheService();
    void announcesAgainWhenTheServiceReturns();
    void survivesDeathWhileListing();
};

void tst_PartitionService::staysQuietWithoutTheService()
{
    Observed observed;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100; ++i)
        QVERIFY(observed.manager.partitions(Any).isEmpty());
    QVERIFY(timer.elapsed() < 2000);
}

void tst_PartitionService::startsNoService()
{
    Observed observed;
    observed.manager.partitions(Any);
    plug(blockDevice(MountPoint, {}));
    appear();
    QTRY_COMPARE(observed.announced.size(), 1);
    there([this] { m_storage->leave(); });
    QTRY_VERIFY(observed.manager.partitions(Any).isEmpty());
    observed.manager.unmount(observed.announced.at(0), {});
    PartitionManager().partitions(Any);
    QVERIFY(!m_bus.hasActivated());

    // Somebody who does want the service to start is noticed.
    QDBusConnection::systemBus().call(QDBusMessage::createMethodCall(
        ServiceName, RootPath, ObjectManager, QStringLiteral("GetManagedObjects")));
    QTRY_VERIFY(m_bus.hasActivated());
}

void tst_PartitionService::followsTheService()
{
    Observed observed;
    QVERIFY(observed.manager.partitions(Any).isEmpty());
    plug(usbStick());
    plug(blockDevice(MountPoint));
    appear();
    QTRY_COMPARE(observed.announcedPaths(), QStringList(BlockPath));
    QCOMPARE(observed.manager.partitions(Any).size(), 1);
    there([this] { m_storage->leave(); });
    QTRY_VERIFY(observed.manager.partitions(Any).isEmpty());
    QCOMPARE(observed.announced.size(), 1);
}

void tst_PartitionService::announcesAgainWhenTheServiceReturns()
{
    plug(blockDevice({}, {}));
    Observed observed;
    for (int round = 1; round <= 3; ++round) {
        appear();
        QTRY_COMPARE(observed.announced.size(), round);
        // The signals of the new owner count, too.
        there([this] { m_storage->setMountPoints(BlockPath, MountPoint); });
        QTRY_COMPARE(observed.announced.size(), round + 1);
        observed.announced.removeLast();
        there([this] {
            m_storage->leave();
            m_storage->setMountPoints(BlockPath, {});
        });
        QTRY_VERIFY(observed.manager.partitions(Any).isEmpty());
    }
}

void tst_PartitionService::survivesDeathWhileListing()
{
    plug(blockDevice(MountPoint, {}));
    appear();
    there([this] { m_storage->setFault(Fault::death()); });
    Observed observed;
    QVERIFY(observed.manager.partitions(Any).isEmpty());
    there([this] { m_storage->clearFaults(); });
    appear();
    QTRY_COMPARE(observed.announcedPaths(), QStringList(BlockPath));
}

QTEST_GUILESS_MAIN(tst_PartitionService)
#include "tst_partitionservice.moc"
