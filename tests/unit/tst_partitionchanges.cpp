// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/unit/storagetest.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QtTest>

using namespace StorageNames;
using Simulator::InterfaceValues;
using Simulator::Storage;

/// What somebody does to the storage; gets the object path of the block device in question.
using Action = std::function<void(Storage &, const QString &)>;
Q_DECLARE_METATYPE(Action)

class tst_PartitionChanges : public StorageTest
{
    Q_OBJECT

private Q_SLOTS:
    void announces_data();
    void announces();
    void waitsForTheDrive();
    void takesTheDriveThatIsNamedLater();
    void forgetsWhatIsPulledOut();
    void ignoresForgedSignals();
};

void tst_PartitionChanges::announces_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<Action>("action");
    QTest::addColumn<int>("announcements");
    QTest::addColumn<int>("status");

    const auto row = [](const char *title, const QStringList &before, const Action &action,
                        int announcements, Partition::Status status) {
        QTest::newRow(title) << before << action << announcements << int(status);
    };
    const auto mountAt = [](const QStringList &places) {
        return [=](Storage &storage, const QString &path) {
            storage.setMountPoints(path, places);
        };
    };
    const QStringList two = MountPoint + QStringList(QStringLiteral("/mnt"));

    row("mounted", {}, mountAt(MountPoint), 1, Partition::Mounted);
    row("mounted in two places", {}, mountAt(two), 1, Partition::Mounted);
    row("mounted in a second place", MountPoint, mountAt(two), 0, Partition::Mounted);
    row("unmounted from one of two", two, mountAt(MountPoint), 1, Partition::Mounted);
    row("mounted elsewhere instead", MountPoint, mountAt({QStringLiteral("/mnt")}), 1,
        Partition::Mounted);
    row("unmounted", MountPoint, mountAt({}), 0, Partition::Unmounted);
    row("told that it is not mounted", {}, mountAt({}), 0, Partition::Unmounted);
    row(
        "mounted again", MountPoint,
        [](Storage &storage, const QString &path) {
            storage.setMountPoints(path, {});
            storage.setMountPoints(path, MountPoint);
        },
        1, Partition::Mounted);
    row(
        "mounted twice", {},
        [](Storage &storage, const QString &path) {
            for (const QStringList &places : {MountPoint, {}, MountPoint})
                storage.setMountPoints(path, places);
        },
        2, Partition::Mounted);
    row(
        "another property", {},
        [](Storage &storage, const QString &path) {
            storage.sendSignal(path, PropertiesInterface, QStringLiteral("PropertiesChanged"),
                               {BlockInterface, QVariantMap{{QStringLiteral("HintSystem"), true}},
                                QStringList(QStringLiteral("IdLabel"))});
        },
        0, Partition::Unmounted);
    row(
        "another interface", {},
        [](Storage &storage, const QString &path) {
            storage.sendSignal(
                RootPath, ObjectManager, QStringLiteral("InterfacesAdded"),
                {QVariant::fromValue(QDBusObjectPath(path)),
                 QVariant::fromValue(InterfaceValues{
                     {QStringLiteral("org.freedesktop.UDisks2.PartitionTable"), {}}})});
        },
        0, Partition::Unmounted);
    row(
        "told of a second time", MountPoint,
        [](Storage &storage, const QString &) { storage.plug(blockDevice(MountPoint)); }, 0,
        Partition::Mounted);
    row(
        "another file system", MountPoint,
        [](Storage &storage, const QString &path) {
            storage.setFilesystem(path, false);
            storage.setFilesystem(path, true);
        },
        1, Partition::Unmounted);
    row(
        "plugged in again", MountPoint,
        [](Storage &storage, const QString &path) {
            storage.unplug(path);
            storage.plug(blockDevice(MountPoint));
        },
        1, Partition::Mounted);
    row(
        "drive pulled and plugged", MountPoint,
        [](Storage &storage, const QString &) {
            storage.unplug(DrivePath);
            storage.plug(usbStick());
        },
        0, Partition::Mounted);
    row(
        "mounted, without being told where", {},
        [](Storage &storage, const QString &path) {
            storage.setTellsMountPoints(false);
            storage.setMountPoints(path, MountPoint);
        },
        1, Partition::Mounted);
    row(
        "unmounted, without being told", MountPoint,
        [](Storage &storage, const QString &path) {
            storage.setTellsMountPoints(false);
            storage.setMountPoints(path, {});
        },
        0, Partition::Unmounted);
}

void tst_PartitionChanges::announces()
{
    QFETCH(QStringList, before);
    QFETCH(Action, action);
    QFETCH(int, announcements);
    QFETCH(int, status);
    appear();
    plug(usbStick());
    plug(blockDevice(before));
    Observed observed;
    QTRY_COMPARE(observed.announcedPaths(), QStringList(BlockPath));
    observed.announced.clear();

    there([&] { action(*m_storage, BlockPath); });
    QTRY_COMPARE(int(observed.manager.partitions(Any).value(0).status()), status);
    QTRY_COMPARE(observed.announced.size(), announcements);
    QVERIFY(passSentinel(observed));
    QCOMPARE(observed.announced.size(), announcements);
    QCOMPARE(int(observed.manager.partitions(Any).value(0).status()), status);
    for (const Partition &partition : qAsConst(observed.announced)) {
        QCOMPARE(partition.objectPath(), BlockPath);
        QCOMPARE(partition.drive().value(QStringLiteral("connectionBus")), QVariant(1));
    }
}

void tst_PartitionChanges::waitsForTheDrive()
{
    appear();
    Observed observed;
    QVERIFY(passSentinel(observed));
    plug(blockDevice(MountPoint));
    QVERIFY(passSentinel(observed));
    QVERIFY(observed.announced.isEmpty());
    QCOMPARE(observed.manager.partitions(Any).value(0).drive(), QVariantMap());

    plug(usbStick());
    QTRY_COMPARE(observed.announcedPaths(), QStringList(BlockPath));
    QCOMPARE(observed.announced.at(0).drive().value(QStringLiteral("connectionBus")), QVariant(1));
    QCOMPARE(observed.manager.partitions(Any).value(0).drive(), observed.announced.at(0).drive());
    QVERIFY(passSentinel(observed));
    QCOMPARE(observed.announced.size(), 1);
}

void tst_PartitionChanges::takesTheDriveThatIsNamedLater()
{
    appear();
    plug(blockDevice({}, {}));
    plug(usbStick());
    Observed observed;
    QCOMPARE(observed.manager.partitions(Any).value(0).drive(), QVariantMap());
    there([this] {
        m_storage->sendSignal(BlockPath, PropertiesInterface, QStringLiteral("PropertiesChanged"),
                              {BlockInterface,
                               QVariantMap{{QStringLiteral("Drive"),
                                            QVariant::fromValue(QDBusObjectPath(DrivePath))}},
                               QStringList()});
    });
    const QString bus = QStringLiteral("connectionBus");
    QTRY_COMPARE(observed.manager.partitions(Any).value(0).drive().value(bus), QVariant(1));
}

void tst_PartitionChanges::forgetsWhatIsPulledOut()
{
    appear();
    plug(usbStick());
    plug(blockDevice());
    Observed observed;
    QCOMPARE(observed.manager.partitions(Any).size(), 1);
    there([this] { m_storage->setFilesystem(BlockPath, false); });
    QTRY_VERIFY(observed.manager.partitions(Any).isEmpty());
    there([this] { m_storage->setFilesystem(BlockPath, true); });
    QTRY_COMPARE(observed.manager.partitions(Any).size(), 1);
    there([this] { m_storage->unplug(DrivePath); });
    QTRY_COMPARE(observed.manager.partitions(Any).value(0).drive(), QVariantMap());
    there([this] { m_storage->unplug(BlockPath); });
    QTRY_VERIFY(observed.manager.partitions(Any).isEmpty());
}

void tst_PartitionChanges::ignoresForgedSignals()
{
    appear();
    plug(usbStick());
    plug(blockDevice());
    Observed observed;
    QTRY_COMPARE(observed.announced.size(), 1);

    const QString forger = QStringLiteral("forger");
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SystemBus, forger);
    auto forged = QDBusMessage::createSignal(BlockPath, PropertiesInterface,
                                             QStringLiteral("PropertiesChanged"));
    forged.setArguments({FilesystemInterface,
                         QVariantMap{{QStringLiteral("MountPoints"),
                                      QVariant::fromValue(QList<QByteArray>{"/mnt"})}},
                         QStringList()});
    QVERIFY(bus.send(forged));
    // With an answer to the forger, the bus has passed the signal on.
    QVERIFY(bus.interface()->isServiceRegistered(ServiceName));
    QDBusConnection::disconnectFromBus(forger);
    QVERIFY(passSentinel(observed));
    QCOMPARE(observed.announced.size(), 1);
    QCOMPARE(observed.manager.partitions(Any).value(0).status(), Partition::Unmounted);
}

QTEST_GUILESS_MAIN(tst_PartitionChanges)
#include "tst_partitionchanges.moc"
