// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/enforcement.h"
#include "support/stick.h"
#include "support/trouble.h"

#include <QTest>

using Simulator::Fault;
using Simulator::Storage;
using Support::Enforcement;
using Support::Stick;

namespace {

const QString UsbStorage = QStringLiteral("UsbStorageEnabled");
const QString MemoryCard = QStringLiteral("MemoryCardEnabled");
const QString ObjectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString StorageName = QStringLiteral("org.freedesktop.UDisks2");

/// How many answers have come to the first order to unmount something.
int answersToUnmount(Enforcement &device)
{
    device.monitor().settle();
    const Support::BusMessage order = device.monitor().calls(QStringLiteral("Unmount")).value(0);
    return device.monitor()
        .messages([&](const Support::BusMessage &message) { return message.answers(order); })
        .size();
}

} // namespace

/// The storage service as a neighbour that is absent, comes and goes, fails and talks nonsense.
class TestStorageService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void absentServiceIsNoFailure();
    void serviceThatAppearsIsSearched();
    void serviceThatComesBackIsSearchedAgain();
    void storageOfAServiceThatLeftIsNotUnmounted();
    void failureToUnmountIsSilent_data();
    void failureToUnmountIsSilent();
    void nobodyWaitsForTheUnmount();
    void manyDevicesNeedNoQuestionEach();
};

void TestStorageService::absentServiceIsNoFailure()
{
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    QVERIFY(device.change(UsbStorage, false));
    QVERIFY(device.change(UsbStorage, true));
    QVERIFY(device.change(MemoryCard, false));

    QCOMPARE(device.calls(), QStringList());
    QCOMPARE(device.log(), QStringList());
}

void TestStorageService::serviceThatAppearsIsSearched()
{
    const Stick stick;
    Support::Neighbour<Storage> storage;
    stick.plug(storage);
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(device.change(UsbStorage, false));
    device.forget();

    storage.appear();

    QTRY_VERIFY(!stick.isMountedIn(storage));
    QCOMPARE(device.calls(), QStringList(stick.unmountOrder()));
    QCOMPARE(device.log(), QStringList());
}

void TestStorageService::serviceThatComesBackIsSearchedAgain()
{
    const Stick stick;
    Support::Neighbour<Storage> storage;
    storage.appear();
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(device.change(UsbStorage, false));
    storage.leave();
    stick.plug(storage);
    device.forget();

    storage.appear();

    QTRY_VERIFY(!stick.isMountedIn(storage));
    QCOMPARE(device.calls(), QStringList(stick.unmountOrder()));
    QCOMPARE(device.log(), QStringList());
}

void TestStorageService::storageOfAServiceThatLeftIsNotUnmounted()
{
    const Stick stick;
    Support::Neighbour<Storage> storage;
    storage.appear();
    stick.plug(storage);
    Enforcement device;
    QVERIFY(device.start());
    storage.leave();
    device.forget();

    QVERIFY(device.change(UsbStorage, false));

    QCOMPARE(device.calls(), QStringList());
    QCOMPARE(device.log(), QStringList());
}

void TestStorageService::failureToUnmountIsSilent_data()
{
    QTest::addColumn<Support::Trouble>("trouble");
    for (const Support::Trouble &trouble : Support::Trouble::of(StorageName)) {
        if (!trouble.isAbsence())
            QTest::newRow(trouble.name.constData()) << trouble;
    }
}

void TestStorageService::failureToUnmountIsSilent()
{
    QFETCH(Support::Trouble, trouble);
    const Stick stick;
    Support::Neighbour<Storage> storage;
    storage.fail(QStringLiteral("Unmount"), trouble.fault);
    storage.appear();
    stick.plug(storage);
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    QVERIFY(device.change(UsbStorage, false));

    QTRY_COMPARE(answersToUnmount(device), 1);
    QCOMPARE(device.calls(), QStringList(stick.unmountOrder()));
    QCOMPARE(device.log(), QStringList());
    QCOMPARE(Support::Caller().policy(UsbStorage).value(), QVariant(false));
}

void TestStorageService::nobodyWaitsForTheUnmount()
{
    const Stick stick;
    Support::Neighbour<Storage> storage;
    storage.fail(QStringLiteral("Unmount"), Fault::silence());
    storage.appear();
    stick.plug(storage);
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    QVERIFY(device.change(UsbStorage, false)); // would fail by its own time-out

    QCOMPARE(device.calls(), QStringList(stick.unmountOrder()));
    QCOMPARE(answersToUnmount(device), 0);
    QCOMPARE(Support::Caller().policy(MemoryCard).value(), QVariant(true));
}

void TestStorageService::manyDevicesNeedNoQuestionEach()
{
    const int count = 300;
    Support::Neighbour<Storage> storage;
    QStringList orders;
    for (int i = 0; i < count; ++i) {
        Stick stick;
        stick.id = QStringLiteral("stick%1").arg(i, 3, 10, QLatin1Char('0'));
        stick.isMounted = i % 100 == 0;
        stick.plug(storage);
        if (stick.isMounted)
            orders.append(stick.unmountOrder());
    }
    storage.appear();
    Enforcement device;
    QVERIFY(device.start());

    QVERIFY(device.change(UsbStorage, false));

    QCOMPARE(device.calls(StorageName), orders);
    const auto questions = device.monitor().messages([](const Support::BusMessage &message) {
        return message.type == Support::BusMessage::Call && message.destination == StorageName;
    });
    QVERIFY2(questions.size() <= orders.size() + 4, // a few listings
             qPrintable(QString::number(questions.size())));
}

QTEST_GUILESS_MAIN(TestStorageService)
#include "tst_storageservice.moc"
