// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/unit/storagetest.h"

#include <QtTest>

using namespace StorageNames;
using Simulator::Fault;
using Simulator::InterfaceValues;
using Simulator::ObjectValues;

class tst_PartitionBadInput : public StorageTest
{
    Q_OBJECT

private Q_SLOTS:
    void survivesBadListings_data();
    void survivesBadListings();
    void survivesBadProperties_data();
    void survivesBadProperties();
    void keepsWhatItKnows_data();
    void keepsWhatItKnows();
    void survivesBadSignals_data();
    void survivesBadSignals();
    void survivesBadAnswersAboutMountPoints_data();
    void survivesBadAnswersAboutMountPoints();
};

void tst_PartitionBadInput::survivesBadListings_data()
{
    QTest::addColumn<QVariantList>("answer");
    QTest::newRow("nothing") << QVariantList();
    QTest::newRow("number") << QVariantList{42};
    QTest::newRow("text") << QVariantList{QStringLiteral("text")};
    QTest::newRow("map") << QVariantList{QVariantMap{{QStringLiteral("a"), 1}}};
    QTest::newRow("one object's interfaces")
        << QVariantList{QVariant::fromValue(InterfaceValues{{BlockInterface, {}}})};
    QTest::newRow("one value too many")
        << QVariantList{QVariant::fromValue(ObjectValues()), QStringLiteral("text")};
}

void tst_PartitionBadInput::survivesBadListings()
{
    QFETCH(QVariantList, answer);
    appear();
    plug(blockDevice(MountPoint, {}));
    there([&] { m_storage->setFault(Fault::wrongAnswer(answer)); });
    Observed observed;
    QVERIFY(observed.manager.partitions(Any).isEmpty());
    // What is told from then on counts all the same.
    QVERIFY(passSentinel(observed));
    QVERIFY(observed.announced.isEmpty());
}

void tst_PartitionBadInput::survivesBadProperties_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QVariant>("value");
    const QVector<QPair<QString, QStringList>> properties{
        {BlockInterface,
         {QStringLiteral("Device"), QStringLiteral("Drive"), QStringLiteral("HintSystem")}},
        {FilesystemInterface, {QStringLiteral("MountPoints")}},
        {DriveInterface,
         {QStringLiteral("ConnectionBus"), QStringLiteral("Vendor"), QStringLiteral("Model"),
          QStringLiteral("Removable")}}};
    const QVector<QPair<const char *, QVariant>> values{
        {"missing", QVariant()},
        {"number", 42},
        {"text list", QStringList(QStringLiteral("text"))},
        {"map", QVariantMap{{QStringLiteral("a"), QVariantMap()}}},
        {"objects", QVariant::fromValue(ObjectValues{{QDBusObjectPath("/a"), {}}})},
        {"signature", QVariant::fromValue(QDBusSignature("s"))}};
    for (const auto &[interface, names] : properties) {
        for (const QString &name : names) {
            for (const auto &[title, value] : values)
                QTest::addRow("%s as %s", qPrintable(name), title) << interface << name << value;
        }
    }
}

void tst_PartitionBadInput::survivesBadProperties()
{
    QFETCH(QString, interface);
    QFETCH(QString, property);
    QFETCH(QVariant, value);

    ObjectValues objects{
        {QDBusObjectPath(DrivePath),
         {{DriveInterface,
           {{QStringLiteral("ConnectionBus"), QStringLiteral("usb")},
            {QStringLiteral("Vendor"), QStringLiteral("Maker")},
            {QStringLiteral("Model"), QStringLiteral("Model")},
            {QStringLiteral("Removable"), true}}}}},
        {QDBusObjectPath(BlockPath),
         {{BlockInterface,
           {{QStringLiteral("Device"), QByteArray("/dev/sda1", 10)},
            {QStringLiteral("Drive"), QVariant::fromValue(QDBusObjectPath(DrivePath))},
            {QStringLiteral("HintSystem"), true}}},
          {FilesystemInterface,
           {{QStringLiteral("MountPoints"), QVariant::fromValue(QList<QByteArray>{"/mnt"})}}}}}};
    const QDBusObjectPath owner(interface == DriveInterface ? DrivePath : BlockPath);
    if (value.isValid())
        objects[owner][interface].insert(property, value);
    else
        objects[owner][interface].remove(property);

    appear();
    there([&] { m_storage->setFault(Fault::wrongAnswer({QVariant::fromValue(objects)})); });
    Observed observed;
    QTRY_COMPARE(observed.announcedPaths(), QStringList(BlockPath));
    const Partition found = observed.manager.partitions(Any).value(0);

    // Whatever is not the bad one is read as it stands.
    const auto isBad = [&](const char *name) {
        return property == QLatin1String(name);
    };
    QCOMPARE(found.devicePath(), isBad("Device") ? QString() : QStringLiteral("/dev/sda1"));
    QCOMPARE(found.storageType(), isBad("HintSystem") ? Partition::External : Partition::System);
    QCOMPARE(found.status(), isBad("MountPoints") ? Partition::Unmounted : Partition::Mounted);
    const QVariantMap drive = found.drive();
    const bool isLost = isBad("Drive");
    QCOMPARE(drive.contains(QStringLiteral("connectionBus")), !isLost && !isBad("ConnectionBus"));
    QCOMPARE(drive.value(QStringLiteral("vendor")).toString().isEmpty(), isLost || isBad("Vendor"));
    QCOMPARE(drive.value(QStringLiteral("model")).toString().isEmpty(), isLost || isBad("Model"));
    QCOMPARE(drive.value(QStringLiteral("removable")).toBool(), !isLost && !isBad("Removable"));
}

void tst_PartitionBadInput::keepsWhatItKnows_data()
{
    survivesBadProperties_data();
}

void tst_PartitionBadInput::keepsWhatItKnows()
{
    QFETCH(QString, interface);
    QFETCH(QString, property);
    QFETCH(QVariant, value);
    appear();
    plug(usbStick());
    plug(blockDevice(MountPoint));
    Observed observed;
    QTRY_COMPARE(observed.announced.size(), 1);

    const QString path = interface == DriveInterface ? DrivePath : BlockPath;
    const QVariantMap changed = value.isValid() ? QVariantMap{{property, value}} : QVariantMap();
    there([&] {
        m_storage->sendSignal(path, PropertiesInterface, QStringLiteral("PropertiesChanged"),
                              {interface, changed, QStringList()});
    });
    QVERIFY(passSentinel(observed));
    QCOMPARE(observed.announced.size(), 1);
    const Partition known = observed.announced.at(0);
    const Partition found = observed.manager.partitions(Any).value(0);
    QCOMPARE(found.devicePath(), known.devicePath());
    QCOMPARE(found.storageType(), known.storageType());
    QCOMPARE(found.mountPath(), known.mountPath());
    QCOMPARE(found.status(), known.status());
    QCOMPARE(found.drive(), known.drive());
}

void tst_PartitionBadInput::survivesBadSignals_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QVariantList>("arguments");

    const auto added = [](const char *title, const QVariantList &arguments) {
        QTest::newRow(title) << RootPath << ObjectManager << QStringLiteral("InterfacesAdded")
                             << arguments;
    };
    const auto removed = [](const char *title, const QVariantList &arguments) {
        QTest::newRow(title) << RootPath << ObjectManager << QStringLiteral("InterfacesRemoved")
                             << arguments;
    };
    const auto changed = [](const char *title, const QVariantList &arguments,
                            const QString &path = BlockPath) {
        QTest::newRow(title) << path << PropertiesInterface << QStringLiteral("PropertiesChanged")
                             << arguments;
    };
    const QVariant path = QVariant::fromValue(QDBusObjectPath(BlockPath));
    const QString mountPoints = QStringLiteral("MountPoints");
    const QVariantMap mounted{{mountPoints, QVariant::fromValue(QList<QByteArray>{"/mnt"})}};
    const QStringList none;
    const QString otherPath = RootPath + QStringLiteral("/block_devices/other");

    added("added: nothing", {});
    added("added: path only", {path});
    added("added: text for a path",
          {BlockPath, QVariant::fromValue(InterfaceValues{{FilesystemInterface, mounted}})});
    added("added: list of names", {path, QStringList(FilesystemInterface)});
    added("added: too much",
          {path, QVariant::fromValue(InterfaceValues{{FilesystemInterface, mounted}}), 1});
    removed("removed: nothing", {});
    removed("removed: text for a path", {BlockPath, QStringList(FilesystemInterface)});
    removed("removed: text for a list", {path, FilesystemInterface});
    removed("removed: no interface", {path, none});
    removed("removed: unknown interface", {path, QStringList(QStringLiteral("a.b"))});
    removed("removed: unknown object",
            {QVariant::fromValue(QDBusObjectPath(otherPath)), QStringList(FilesystemInterface)});
    changed("changed: nothing", {});
    changed("changed: without list", {FilesystemInterface, mounted});
    changed("changed: text for a list", {FilesystemInterface, mounted, mountPoints});
    changed("changed: text for a map", {FilesystemInterface, mountPoints, none});
    changed("changed: texts for mount points",
            {FilesystemInterface, QVariantMap{{mountPoints, MountPoint}}, none});
    changed("changed: bytes for mount points",
            {FilesystemInterface, QVariantMap{{mountPoints, QByteArray("/mnt")}}, none});
    changed("changed: another interface's", {BlockInterface, mounted, none});
    changed("changed: unknown interface", {QStringLiteral("a.b"), mounted, none});
    changed("changed: unknown object", {FilesystemInterface, mounted, none}, otherPath);
    changed("changed: unknown object, untold",
            {FilesystemInterface, QVariantMap(), QStringList(mountPoints)}, otherPath);
    changed("changed: unknown property, untold",
            {FilesystemInterface, QVariantMap(), QStringList(QStringLiteral("Size"))});
}

void tst_PartitionBadInput::survivesBadSignals()
{
    QFETCH(QString, path);
    QFETCH(QString, interface);
    QFETCH(QString, member);
    QFETCH(QVariantList, arguments);
    appear();
    plug(blockDevice({}, {}));
    Observed observed;
    QTRY_COMPARE(observed.announced.size(), 1);
    there([&] { m_storage->sendSignal(path, interface, member, arguments); });
    QVERIFY(passSentinel(observed));
    QCOMPARE(observed.announced.size(), 1);
    QCOMPARE(observed.manager.partitions(Any).size(), 1);
    QCOMPARE(observed.manager.partitions(Any).at(0).status(), Partition::Unmounted);
    QCOMPARE(there([this] { return m_storage->calls().size(); }), 1);
}

void tst_PartitionBadInput::survivesBadAnswersAboutMountPoints_data()
{
    QTest::addColumn<QVariantList>("answer");
    QTest::newRow("nothing") << QVariantList();
    QTest::newRow("bare list") << QVariantList{QVariant::fromValue(QList<QByteArray>{"/mnt"})};
    QTest::newRow("text") << QVariantList{
        QVariant::fromValue(QDBusVariant(QStringLiteral("/mnt")))};
    QTest::newRow("texts") << QVariantList{QVariant::fromValue(QDBusVariant(MountPoint))};
}

void tst_PartitionBadInput::survivesBadAnswersAboutMountPoints()
{
    QFETCH(QVariantList, answer);
    appear();
    plug(blockDevice({}, {}));
    Observed observed;
    QTRY_COMPARE(observed.announced.size(), 1);
    there([&] {
        m_storage->setFault(QStringLiteral("Get"), Fault::wrongAnswer(answer));
        m_storage->setTellsMountPoints(false);
        m_storage->setMountPoints(BlockPath, MountPoint);
    });
    QTRY_COMPARE(calls("Get"), 1);
    QVERIFY(passSentinel(observed));
    QCOMPARE(observed.announced.size(), 1);

    there([&] {
        m_storage->clearFaults();
        m_storage->setMountPoints(BlockPath, MountPoint);
    });
    QTRY_COMPARE(observed.announced.size(), 2);
}

QTEST_GUILESS_MAIN(tst_PartitionBadInput)
#include "tst_partitionbadinput.moc"
