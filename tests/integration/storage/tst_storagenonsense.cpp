// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/objecttree.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/stick.h"
#include "support/trouble.h"
#include "support/watcheddaemon.h"

#include <QTest>

using Simulator::Fault;
using Simulator::InterfaceValues;
using Simulator::Storage;
using namespace Support;

namespace {

const QString RootPath = QStringLiteral("/org/freedesktop/UDisks2");
const QString ObjectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString StorageName = QStringLiteral("org.freedesktop.UDisks2");

/// What a made-up block device called "odd" tells of itself: all is as it should be but what a
/// test changes.
InterfaceValues oddBlock()
{
    const QByteArray mountPoint("/run/media/odd\0", 15);
    return {
        {QStringLiteral("org.freedesktop.UDisks2.Block"),
         {{QStringLiteral("Device"), QByteArray("/dev/odd\0", 9)},
          {QStringLiteral("Drive"), QVariant::fromValue(QDBusObjectPath("/"))},
          {QStringLiteral("HintSystem"), false}}},
        {QStringLiteral("org.freedesktop.UDisks2.Filesystem"),
         {{QStringLiteral("MountPoints"), QVariant::fromValue(QList<QByteArray>{mountPoint})}}}};
}

/// The same with another value of one property; with none when the value is invalid.
InterfaceValues oddBlock(const QString &interface, const QString &property, const QVariant &value)
{
    InterfaceValues values = oddBlock();
    QVariantMap &properties = values[QStringLiteral("org.freedesktop.UDisks2.") + interface];
    if (value.isValid())
        properties.insert(property, value);
    else
        properties.remove(property);
    return values;
}

} // namespace

/// A storage service, or somebody in its name, that talks nonsense.
class TestStorageNonsense : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void listingThatFailsIsSurvived_data();
    void listingThatFailsIsSurvived();
    void oddPropertiesAreTakenAsMissing_data();
    void oddPropertiesAreTakenAsMissing();
    void oddSignalsAreIgnored_data();
    void oddSignalsAreIgnored();
    void signalsOfOthersAreIgnored();
};

void TestStorageNonsense::listingThatFailsIsSurvived_data()
{
    QTest::addColumn<Oddity>("oddity");
    for (const Oddity &oddity : Oddity::all()) {
        if (oddity.fault.delay == 0)
            QTest::newRow(oddity.name.constData()) << oddity;
    }
    QTest::newRow("error") << Oddity{"error", Fault::error()};
    QTest::newRow("nothing") << Oddity{"nothing", Fault::wrongAnswer({})};
}

/// What appears later is seen all the same.
void TestStorageNonsense::listingThatFailsIsSurvived()
{
    QFETCH(Oddity, oddity);
    Neighbour<Storage> storage;
    storage.fail(QStringLiteral("GetManagedObjects"), oddity.fault);
    const Stick unseen;
    unseen.plug(storage);
    storage.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(daemon.change(UsbStorage, false));
    QCOMPARE(daemon.calls(StorageName), QStringList());

    const Stick later{QStringLiteral("later"), QStringLiteral("usb"), false, true, false};
    later.plug(storage);

    QCOMPARE(daemon.calls(StorageName), QStringList(later.unmountOrder()));
    QCOMPARE(daemon.logged().filter(QStringLiteral("orage")), QStringList());
}

void TestStorageNonsense::oddPropertiesAreTakenAsMissing_data()
{
    const QString block = QStringLiteral("Block");
    const QString filesystem = QStringLiteral("Filesystem");
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("isUnmounted");
    const QString hint = QStringLiteral("HintSystem");
    QTest::newRow("all right") << block << hint << QVariant(false) << true;
    QTest::newRow("no hint") << block << hint << QVariant() << true;
    QTest::newRow("hint as text") << block << hint << QVariant(QStringLiteral("true")) << true;
    QTest::newRow("hint as number") << block << hint << QVariant(1) << true;
    const QString drive = QStringLiteral("Drive");
    QTest::newRow("no drive") << block << drive << QVariant() << true;
    QTest::newRow("drive as text") << block << drive << QVariant(QStringLiteral("/x")) << true;
    QTest::newRow("no device") << block << QStringLiteral("Device") << QVariant() << true;
    QTest::newRow("device as number") << block << QStringLiteral("Device") << QVariant(7) << true;
    const QString points = QStringLiteral("MountPoints");
    QTest::newRow("no mount points") << filesystem << points << QVariant() << false;
    QTest::newRow("mount points as text")
        << filesystem << points << QVariant(QStringLiteral("/mnt")) << false;
    QTest::newRow("mount points as texts")
        << filesystem << points << QVariant(QStringList(QStringLiteral("/mnt"))) << false;
    QTest::newRow("mount points as bytes")
        << filesystem << points << QVariant(QByteArray("/mnt")) << false;
}

void TestStorageNonsense::oddPropertiesAreTakenAsMissing()
{
    QFETCH(QString, interface);
    QFETCH(QString, property);
    QFETCH(QVariant, value);
    QFETCH(bool, isUnmounted);
    Neighbour<Storage> storage;
    storage.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(MemoryCard, false));
    daemon.forget();
    Stick odd;
    odd.id = QStringLiteral("odd");
    storage.fail(QStringLiteral("Unmount"), Fault::wrongAnswer({})); // as if there were one

    storage.ask([&](Storage &service) {
        service.sendSignal(RootPath, ObjectManager, QStringLiteral("InterfacesAdded"),
                           {QVariant::fromValue(QDBusObjectPath(odd.path())),
                            QVariant::fromValue(oddBlock(interface, property, value))});
    });

    QCOMPARE(daemon.calls(), isUnmounted ? QStringList(odd.unmountOrder()) : QStringList());
    QCOMPARE(daemon.logged(), QStringList());
}

void TestStorageNonsense::oddSignalsAreIgnored_data()
{
    const QString added = QStringLiteral("InterfacesAdded");
    const QString removed = QStringLiteral("InterfacesRemoved");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QVariantList>("arguments");
    QTest::newRow("added, nothing") << added << QVariantList();
    QTest::newRow("added, a number") << added << QVariantList{7};
    QTest::newRow("added, path as text")
        << added << QVariantList{QStringLiteral("/x"), QVariant::fromValue(oddBlock())};
    QTest::newRow("added, one too many") << added
                                         << QVariantList{QVariant::fromValue(QDBusObjectPath("/x")),
                                                         QVariant::fromValue(oddBlock()), 7};
    QTest::newRow("removed, nothing") << removed << QVariantList();
    QTest::newRow("removed, a text") << removed << QVariantList{QStringLiteral("/x")};
    QTest::newRow("removed, unknown object")
        << removed
        << QVariantList{QVariant::fromValue(QDBusObjectPath("/x")),
                        QStringList(QStringLiteral("org.freedesktop.UDisks2.Block"))};
}

void TestStorageNonsense::oddSignalsAreIgnored()
{
    QFETCH(QString, member);
    QFETCH(QVariantList, arguments);
    const Stick stick;
    Neighbour<Storage> storage;
    storage.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(MemoryCard, false));
    QVERIFY(daemon.change(UsbStorage, false));
    daemon.forget();

    storage.ask(
        [&](Storage &service) { service.sendSignal(RootPath, ObjectManager, member, arguments); });
    QCOMPARE(daemon.calls(), QStringList());

    stick.plug(storage);
    QCOMPARE(daemon.calls(), QStringList(stick.unmountOrder()));
    QCOMPARE(daemon.logged(), QStringList());
}

/// Anybody may send a signal that looks like one of the storage service.
void TestStorageNonsense::signalsOfOthersAreIgnored()
{
    Neighbour<Storage> storage;
    storage.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(MemoryCard, false));
    daemon.forget();

    QDBusMessage forged =
        QDBusMessage::createSignal(RootPath, ObjectManager, QStringLiteral("InterfacesAdded"));
    forged.setArguments(
        {QVariant::fromValue(QDBusObjectPath("/x")), QVariant::fromValue(oddBlock())});
    Bus bus;
    QVERIFY(bus.connect().send(forged));

    QCOMPARE(daemon.calls(), QStringList());
}

QTEST_GUILESS_MAIN(TestStorageNonsense)
#include "tst_storagenonsense.moc"
