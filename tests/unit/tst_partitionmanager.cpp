// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/unit/storagetest.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QSemaphore>
#include <QtTest>

using namespace StorageNames;
using Simulator::Block;
using Simulator::Drive;

class tst_PartitionManager : public StorageTest
{
    Q_OBJECT

private Q_SLOTS:
    void defaultPartitionIsNothing();
    void describesThePartition();
    void tellsTheBus_data();
    void tellsTheBus();
    void toleratesMissingDrive_data();
    void toleratesMissingDrive();
    void readsFileNames();
    void filtersByType_data();
    void filtersByType();
    void listsOnceForHundreds();
    void listsWhenTheLoopStarts();
    void losesNothingAfterAnEarlyListing();
    void ignoresSignalsOlderThanTheListing_data();
    void ignoresSignalsOlderThanTheListing();
};

void tst_PartitionManager::defaultPartitionIsNothing()
{
    const Partition partition;
    QCOMPARE(partition.objectPath(), QString());
    QCOMPARE(partition.devicePath(), QString());
    QCOMPARE(partition.mountPath(), QString());
    QCOMPARE(partition.drive(), QVariantMap());
    QCOMPARE(partition.storageType(), Partition::Invalid);
    QCOMPARE(partition.status(), Partition::Unmounted);
}

void tst_PartitionManager::describesThePartition()
{
    appear();
    plug(usbStick());
    plug(blockDevice({QStringLiteral("/run/media/stick"), QStringLiteral("/mnt")}));
    Block system = blockDevice({}, {});
    system.id = QStringLiteral("vda");
    system.isSystem = true;
    plug(system);

    const PartitionManager manager;
    const auto found = manager.partitions(Any);
    QCOMPARE(found.size(), 2);
    QCOMPARE(found.at(0).objectPath(), BlockPath);
    QCOMPARE(found.at(0).devicePath(), QStringLiteral("/dev/sda1"));
    QCOMPARE(found.at(0).mountPath(), QStringLiteral("/run/media/stick"));
    QCOMPARE(found.at(0).storageType(), Partition::External);
    QCOMPARE(found.at(0).status(), Partition::Mounted);
    QCOMPARE(found.at(0).drive(),
             (QVariantMap{{QStringLiteral("connectionBus"), 1},
                          {QStringLiteral("vendor"), QStringLiteral("Maker")},
                          {QStringLiteral("model"), QStringLiteral("Model")},
                          {QStringLiteral("removable"), true}}));
    QCOMPARE(found.at(1).devicePath(), QStringLiteral("/dev/vda"));
    QCOMPARE(found.at(1).mountPath(), QString());
    QCOMPARE(found.at(1).storageType(), Partition::System);
    QCOMPARE(found.at(1).status(), Partition::Unmounted);
    QCOMPARE(found.at(1).drive(), QVariantMap());
}

void tst_PartitionManager::tellsTheBus_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("bus");
    QTest::newRow("memory card") << QStringLiteral("sdio") << QVariant(0);
    QTest::newRow("USB") << QStringLiteral("usb") << QVariant(1);
    QTest::newRow("IEEE 1394") << QStringLiteral("ieee1394") << QVariant(2);
    QTest::newRow("another") << QStringLiteral("nvme") << QVariant(3);
    QTest::newRow("another spelling") << QStringLiteral("USB") << QVariant(3);
    QTest::newRow("not told") << QString() << QVariant();
}

void tst_PartitionManager::tellsTheBus()
{
    QFETCH(QString, name);
    appear();
    Drive drive = usbStick();
    drive.connectionBus = name;
    plug(drive);
    plug(blockDevice());
    const PartitionManager manager;
    const QVariantMap found = manager.partitions(Any).value(0).drive();
    QTEST(found.value(QStringLiteral("connectionBus")), "bus");
    QCOMPARE(found.value(QStringLiteral("model")), QVariant(QStringLiteral("Model")));
}

void tst_PartitionManager::toleratesMissingDrive_data()
{
    QTest::addColumn<QString>("drive");
    QTest::newRow("none") << QString();
    QTest::newRow("not there") << DrivePath;
    QTest::newRow("itself") << BlockPath;
}

void tst_PartitionManager::toleratesMissingDrive()
{
    QFETCH(QString, drive);
    appear();
    plug(blockDevice({}, drive));
    const PartitionManager manager;
    QCOMPARE(manager.partitions(Any).size(), 1);
    QCOMPARE(manager.partitions(Any).at(0).drive(), QVariantMap());
}

void tst_PartitionManager::readsFileNames()
{
    appear();
    const QString odd = QString::fromUtf8("/run/media/m\xc3\xbcll with blanks");
    plug(blockDevice({odd}, {}));
    const PartitionManager manager;
    QCOMPARE(manager.partitions(Any).value(0).mountPath().toUtf8(),
             QFile::decodeName(QFile::encodeName(odd)).toUtf8());
}

void tst_PartitionManager::filtersByType_data()
{
    QTest::addColumn<int>("types");
    QTest::addColumn<QStringList>("names");
    const QString system = QStringLiteral("system");
    const QString whole = QStringLiteral("whole");
    const QString part = QStringLiteral("zpart");
    QTest::newRow("any") << 0x0F << QStringList{system, whole, part};
    QTest::newRow("any but parents") << 0x100F << QStringList{system, part};
    QTest::newRow("system") << 0x01 << QStringList{system};
    QTest::newRow("external") << 0x08 << QStringList{whole, part};
    QTest::newRow("external but parents") << 0x1008 << QStringList{part};
    QTest::newRow("user") << 0x02 << QStringList();
    QTest::newRow("mass") << 0x04 << QStringList();
    QTest::newRow("nothing") << 0x00 << QStringList();
    QTest::newRow("no type") << 0x1000 << QStringList();
    QTest::newRow("bits without a meaning") << 0x0FF0 << QStringList();
}

void tst_PartitionManager::filtersByType()
{
    QFETCH(int, types);
    appear();
    plug(Block{QStringLiteral("system"), {}, true});
    plug(Block{QStringLiteral("whole"), {}, false, true, true});
    plug(Block{QStringLiteral("table"), {}, false, false, true});
    plug(Block{QStringLiteral("zpart"), {}});
    const PartitionManager manager;
    QStringList names;
    for (const Partition &partition : manager.partitions(Partition::StorageTypes(types)))
        names.append(partition.objectPath().section(QLatin1Char('/'), -1));
    QTEST(names, "names");
}

void tst_PartitionManager::listsOnceForHundreds()
{
    constexpr int many = 500;
    appear();
    there([this] {
        for (int i = 0; i < many; ++i) {
            Drive drive = usbStick();
            drive.id = QString::number(i);
            const QString path = m_storage->plug(drive);
            Block block = blockDevice(MountPoint, path);
            block.id = QString::number(i);
            m_storage->plug(block);
        }
    });
    Observed observed;
    QCOMPARE(observed.manager.partitions(Any).size(), many);
    QTRY_COMPARE(observed.announced.size(), many);
    QCOMPARE(observed.manager.partitions(Any).size(), many);

    const QString extra = plug(Block{QStringLiteral("extra"), {}});
    QTRY_COMPARE(observed.announced.size(), many + 1);
    there([&] { m_storage->setMountPoints(extra, MountPoint); });
    QTRY_COMPARE(observed.announced.size(), many + 2);
    QCOMPARE(there([this] { return m_storage->calls().size(); }), 1);
    QCOMPARE(calls("GetManagedObjects"), 1);
}

void tst_PartitionManager::listsWhenTheLoopStarts()
{
    appear();
    plug(usbStick());
    plug(blockDevice(MountPoint));
    Observed observed;
    QCOMPARE(calls("GetManagedObjects"), 0);
    QTRY_COMPARE(observed.announcedPaths(), QStringList(BlockPath));
    QCOMPARE(observed.announced.at(0).status(), Partition::Mounted);
    QCOMPARE(observed.announced.at(0).drive().value(QStringLiteral("connectionBus")), QVariant(1));
    QVERIFY(passSentinel(observed));
    QCOMPARE(observed.announced.size(), 1);
}

void tst_PartitionManager::losesNothingAfterAnEarlyListing()
{
    appear();
    plug(usbStick());
    plug(blockDevice());
    Observed observed;
    QCOMPARE(observed.manager.partitions(Any).value(0).status(), Partition::Unmounted);
    QVERIFY(observed.announced.isEmpty());
    // Nothing of this is seen before the loop runs.
    there([this] { m_storage->setMountPoints(BlockPath, MountPoint); });
    QTRY_COMPARE(observed.announced.size(), 2);
    QCOMPARE(observed.announced.at(0).status(), Partition::Unmounted);
    QCOMPARE(observed.announced.at(1).status(), Partition::Mounted);
    QCOMPARE(observed.manager.partitions(Any).value(0).status(), Partition::Mounted);
    QCOMPARE(calls("GetManagedObjects"), 1);
}

void tst_PartitionManager::ignoresSignalsOlderThanTheListing_data()
{
    QTest::addColumn<bool>("isAskedEarly");
    QTest::newRow("asked before its turn") << true;
    QTest::newRow("left to the loop") << false;
}

void tst_PartitionManager::ignoresSignalsOlderThanTheListing()
{
    QFETCH(bool, isAskedEarly);
    appear();
    const QString replugged = plug(Block{QStringLiteral("a"), {}});
    const QString remounted = plug(blockDevice(MountPoint, {}));

    // The service does all this after it can be heard and before it makes the listing.
    QSemaphore isHeard;
    QMetaObject::invokeMethod(m_storage, [&] {
        isHeard.acquire();
        m_storage->unplug(m_storage->plug(Block{QStringLiteral("passing"), {}}));
        m_storage->unplug(replugged);
        m_storage->plug(Block{QStringLiteral("a"), {}});
        m_storage->setMountPoints(remounted, {});
        m_storage->setMountPoints(remounted, MountPoint);
    });
    Observed observed;
    QCoreApplication::processEvents();
    QVERIFY(QDBusConnection::systemBus().interface()->isServiceRegistered(ServiceName));
    isHeard.release();

    if (isAskedEarly)
        QCOMPARE(observed.manager.partitions(Any).size(), 2);
    QTRY_COMPARE(observed.announcedPaths(), QStringList({replugged, remounted}));
    QVERIFY(passSentinel(observed));
    QCOMPARE(observed.announcedPaths(), QStringList({replugged, remounted}));
    QCOMPARE(observed.announced.at(1).status(), Partition::Mounted);
    QCOMPARE(observed.manager.partitions(Any).size(), 2);
    QCOMPARE(calls("GetManagedObjects"), 1);
}

QTEST_GUILESS_MAIN(tst_PartitionManager)
#include "tst_partitionmanager.moc"
