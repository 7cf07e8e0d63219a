// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/devicetree.h"
#include "tests/unit/storagetest.h"

#include <QtTest>

using namespace StorageNames;
using Simulator::Block;
using Simulator::Drive;
using Support::DeviceTree;

namespace {

const QString Top = QStringLiteral("dm-9");
const QString TopPath = RootPath + QStringLiteral("/block_devices/dm_2d9");

QString blockPath(QString name)
{
    return RootPath + QStringLiteral("/block_devices/")
        + name.replace(QLatin1String("-"), QLatin1String("_2d"));
}

/// What a partition says of where it is: "external 1" is on removable storage of bus 1.
QString place(const Partition &partition)
{
    const bool isSystem = partition.storageType() == Partition::System;
    const QString type = isSystem ? QStringLiteral("system") : QStringLiteral("external");
    const QVariant bus = partition.drive().value(QStringLiteral("connectionBus"));
    return bus.isValid() ? type + QLatin1Char(' ') + bus.toString() : type;
}

/// A block device as UDisks2 shows one that is built on others: on no drive, part of the system.
struct Stacked
{
    QString name;
    QString encrypted; ///< name of the device whose content it is
    QStringList below = {}; ///< names of the devices on which the kernel has built it
    bool isSystem = true;
};

using Stack = QVector<Stacked>;

} // namespace

Q_DECLARE_METATYPE(Stack)

/// Devices that are built on others, as a decrypted stick or a logical volume is. In place of the
/// kernel's device mapper there are directories of the same form.
class tst_PartitionStacks : public StorageTest
{
    Q_OBJECT

private Q_SLOTS:
    void isWhereItsBottomIs_data();
    void isWhereItsBottomIs();
    void partitionOfAnArrayIsWhereTheArrayIs();
    void driveOfItsOwnCounts();
    void waitsForWhatItIsBuiltOn_data();
    void waitsForWhatItIsBuiltOn();
    void announcesEachBus();
    void followsWhatIsOpenedLater();

private:
    void plugDrives() const;
    void plugStack(const DeviceTree &tree, const Stack &stack) const;
};

/// Three devices of the kernel's with a drive each, and one without.
void tst_PartitionStacks::plugDrives() const
{
    const auto plugDrive = [this](const char *name, const char *bus, bool isSystem) {
        Drive drive = usbStick();
        drive.id = QLatin1String(name);
        drive.connectionBus = QLatin1String(bus);
        plug(Block{QLatin1String(name), plug(drive), isSystem, false});
    };
    plugDrive("sda1", "usb", false);
    plugDrive("mmcblk0p1", "sdio", false);
    plugDrive("vda1", "nvme", true);
    plug(Block{QStringLiteral("loop0"), {}, false, false});
}

void tst_PartitionStacks::plugStack(const DeviceTree &tree, const Stack &stack) const
{
    for (const Stacked &each : stack) {
        Block block{each.name, {}, each.isSystem, each.name == Top};
        if (!each.encrypted.isEmpty())
            block.encrypted = blockPath(each.encrypted);
        tree.add(QString(each.name).replace(QLatin1Char('/'), QLatin1Char('!')), each.below);
        plug(block);
    }
}

void tst_PartitionStacks::isWhereItsBottomIs_data()
{
    QTest::addColumn<Stack>("stack");
    QTest::addColumn<QStringList>("places");
    const QString stick = QStringLiteral("sda1");
    const QString card = QStringLiteral("mmcblk0p1");
    const QString internal = QStringLiteral("vda1");
    const QString loop = QStringLiteral("loop0");
    const QString a = QStringLiteral("dm-0");
    const QString b = QStringLiteral("dm-1");
    const QStringList usb{QStringLiteral("external 1")};
    const QStringList system{QStringLiteral("system 3")};

    QTest::newRow("decrypted stick") << Stack{{Top, stick}} << usb;
    QTest::newRow("decrypted card")
        << Stack{{Top, card}} << QStringList(QStringLiteral("external 0"));
    QTest::newRow("decrypted disk") << Stack{{Top, internal}} << system;
    QTest::newRow("decrypted file")
        << Stack{{Top, loop}} << QStringList(QStringLiteral("external"));
    QTest::newRow("decrypted disk that says it is removable")
        << Stack{{Top, internal, {}, false}} << system;
    QTest::newRow("volume on a stick") << Stack{{Top, {}, {stick}}} << usb;
    QTest::newRow("volume on a disk") << Stack{{Top, {}, {internal}}} << system;
    QTest::newRow("volume on a decrypted stick") << Stack{{a, stick}, {Top, {}, {a}}} << usb;
    QTest::newRow("decrypted volume on a stick") << Stack{{a, {}, {stick}}, {Top, a}} << usb;
    QTest::newRow("many storeys") << Stack{{a, {}, {stick}},
                                           {b, a},
                                           {QStringLiteral("dm-2"), {}, {b}},
                                           {Top, QStringLiteral("dm-2")}}
                                  << usb;
    QTest::newRow("volume on disk and stick") << Stack{{Top, {}, {internal, stick}}} << usb;
    QTest::newRow("volume on stick and disk")
        << Stack{{a, {}, {internal}}, {b, stick}, {Top, {}, {a, b}}} << usb;
    QTest::newRow("volume on stick and card")
        << Stack{{Top, {}, {stick, card}}}
        << QStringList{QStringLiteral("external 0"), QStringLiteral("external 1")};
    QTest::newRow("volume twice on one stick")
        << Stack{{a, stick}, {b, {}, {stick}}, {Top, {}, {a, b}}} << usb;
    QTest::newRow("device with a slash in its name")
        << Stack{{QStringLiteral("box/c0d0"), {}, {stick}}, {Top, {}, {QStringLiteral("box!c0d0")}}}
        << usb;
    QTest::newRow("on nothing") << Stack{{Top, {}}} << QStringList(QStringLiteral("system"));
    QTest::newRow("on nothing, removable")
        << Stack{{Top, {}, {}, false}} << QStringList(QStringLiteral("external"));
    QTest::newRow("on what nobody knows")
        << Stack{{Top, {}, {QStringLiteral("ram0")}}} << QStringList(QStringLiteral("system"));
    QTest::newRow("on a stick and what nobody knows")
        << Stack{{Top, {}, {QStringLiteral("ram0"), stick}}} << usb;
    QTest::newRow("on itself") << Stack{{Top, Top}} << QStringList(QStringLiteral("system"));
    QTest::newRow("in a circle") << Stack{{a, Top}, {b, a}, {Top, b}}
                                 << QStringList(QStringLiteral("system"));
    QTest::newRow("in a circle of the kernel's")
        << Stack{{a, {}, {Top}}, {Top, {}, {a}, false}} << QStringList(QStringLiteral("external"));
    QTest::newRow("in a circle with a way out")
        << Stack{{a, {}, {Top, stick}}, {Top, {}, {a}}} << usb;
}

void tst_PartitionStacks::isWhereItsBottomIs()
{
    QFETCH(Stack, stack);
    QFETCH(QStringList, places);
    const DeviceTree tree;
    appear();
    plugDrives();
    plugStack(tree, stack);
    Observed observed;
    QStringList found;
    for (const Partition &partition : observed.manager.partitions(Any)) {
        QCOMPARE(partition.objectPath(), TopPath);
        QCOMPARE(partition.devicePath(), QStringLiteral("/dev/dm-9"));
        found.append(place(partition));
    }
    QCOMPARE(found, places);
    for (const Partition &partition : observed.manager.partitions(Partition::External))
        QVERIFY(places.contains(place(partition)));
}

void tst_PartitionStacks::partitionOfAnArrayIsWhereTheArrayIs()
{
    const DeviceTree tree;
    appear();
    plugDrives();
    const QString array = QStringLiteral("md0");
    const QString partition = QStringLiteral("md0p1");
    tree.add(array, {QStringLiteral("sda1")});
    tree.addPartition(partition, array);
    plug(Block{array, {}, true, false});
    plug(Block{partition, {}, true});
    const PartitionManager manager;
    QCOMPARE(manager.partitions(Any).size(), 1);
    QCOMPARE(place(manager.partitions(Any).at(0)), QStringLiteral("external 1"));
}

void tst_PartitionStacks::driveOfItsOwnCounts()
{
    const DeviceTree tree;
    appear();
    plugDrives();
    tree.add(Top, {QStringLiteral("sda1")});
    plug(Block{Top, RootPath + QStringLiteral("/drives/vda1"), true});
    const PartitionManager manager;
    QCOMPARE(manager.partitions(Any).size(), 1);
    QCOMPARE(place(manager.partitions(Any).at(0)), QStringLiteral("system 3"));
}

void tst_PartitionStacks::waitsForWhatItIsBuiltOn_data()
{
    QTest::addColumn<Stack>("stack");
    QTest::newRow("decrypted") << Stack{{Top, QStringLiteral("sda1")}};
    QTest::newRow("volume") << Stack{{Top, {}, {QStringLiteral("sda1")}}};
}

void tst_PartitionStacks::waitsForWhatItIsBuiltOn()
{
    QFETCH(Stack, stack);
    const DeviceTree tree;
    appear();
    Observed observed;
    plugStack(tree, stack);
    QVERIFY(passSentinel(observed));
    QVERIFY(observed.announced.isEmpty());

    plugDrives();
    QTRY_COMPARE(observed.announcedPaths(), QStringList(TopPath));
    QCOMPARE(place(observed.announced.at(0)), QStringLiteral("external 1"));
}

/// Whoever forbids one of the two buses has to hear of it.
void tst_PartitionStacks::announcesEachBus()
{
    const DeviceTree tree;
    appear();
    plugDrives();
    plugStack(tree, {{Top, {}, {QStringLiteral("sda1"), QStringLiteral("mmcblk0p1")}}});
    Observed observed;
    QTRY_COMPARE(observed.announcedPaths(), QStringList({TopPath, TopPath}));
    observed.announced.clear();

    there([this] { m_storage->setMountPoints(TopPath, MountPoint); });
    QTRY_COMPARE(observed.announced.size(), 2);
    QCOMPARE(place(observed.announced.at(0)), QStringLiteral("external 0"));
    QCOMPARE(place(observed.announced.at(1)), QStringLiteral("external 1"));
}

void tst_PartitionStacks::followsWhatIsOpenedLater()
{
    const DeviceTree tree;
    appear();
    plugDrives();
    Observed observed;
    QVERIFY(passSentinel(observed));

    plugStack(tree, {{Top, QStringLiteral("sda1")}});
    there([this] { m_storage->setMountPoints(TopPath, MountPoint); });
    QTRY_COMPARE(observed.announced.size(), 2);
    QCOMPARE(observed.announced.at(1).status(), Partition::Mounted);
    QCOMPARE(place(observed.announced.at(1)), QStringLiteral("external 1"));
}

QTEST_GUILESS_MAIN(tst_PartitionStacks)
#include "tst_partitionstacks.moc"
