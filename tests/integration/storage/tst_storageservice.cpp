// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/stick.h"
#include "support/watcheddaemon.h"

#include <QTest>

using Simulator::Fault;
using Simulator::Storage;
using namespace Support;

namespace {

const QString ObjectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString StorageName = QStringLiteral("org.freedesktop.UDisks2");

const QString Busy = QStringLiteral("org.freedesktop.UDisks2.Error.DeviceBusy");

/// What is logged when the stick could not be unmounted.
QString complaint(const Stick &stick)
{
    return QStringLiteral("warning|systemsettings|Cannot unmount \"/dev/%1\": ").arg(stick.id)
        + Busy;
}

/// Waits until the storage service has refused to unmount something.
bool waitForRefusal(WatchedDaemon &daemon)
{
    return daemon.monitor().waitFor(
        [](const BusMessage &message) { return message.errorName == Busy; });
}

/// How many answers have come to the first call of @p method.
int answers(WatchedDaemon &daemon, const QString &method)
{
    daemon.monitor().settle();
    const BusMessage call = daemon.monitor().calls(method).value(0);
    return daemon.monitor()
        .messages([&](const BusMessage &message) { return message.answers(call); })
        .size();
}

} // namespace

/// The storage service as a neighbour that is absent, comes and goes, fails and talks nonsense.
class TestStorageService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void absentServiceIsNoFailure();
    void serviceThatAppearsIsSearched();
    void serviceThatComesBackIsSearchedAgain();
    void storageOfAServiceThatLeftIsNotUnmounted();
    void failureToUnmountIsLoggedOnce();
    void deathInsteadOfUnmountingIsSilent();
    void storageInUseIsUnmountedWhenItIsFree();
    void storageInUseIsLeftAloneOnceItIsAllowed();
    void eachPlaceIsUnmounted();
    void storageThatWasNotListedIsUnmountedAtTheNextOccasion_data();
    void storageThatWasNotListedIsUnmountedAtTheNextOccasion();
    void nobodyWaitsForTheUnmount();
    void manyDevicesNeedNoQuestionEach();
};

void TestStorageService::absentServiceIsNoFailure()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(UsbStorage, false));
    QVERIFY(daemon.change(UsbStorage, true));
    QVERIFY(daemon.change(MemoryCard, false));

    QCOMPARE(daemon.calls(), QStringList());
    QCOMPARE(daemon.logged(), QStringList());
}

void TestStorageService::serviceThatAppearsIsSearched()
{
    const Stick stick;
    Neighbour<Storage> storage;
    stick.plug(storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(UsbStorage, false));
    daemon.forget();

    storage.appear();

    QTRY_VERIFY(!stick.isMountedIn(storage));
    QCOMPARE(daemon.calls(), QStringList(stick.unmountOrder()));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestStorageService::serviceThatComesBackIsSearchedAgain()
{
    const Stick stick;
    Neighbour<Storage> storage;
    storage.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(UsbStorage, false));
    storage.leave();
    stick.plug(storage);
    daemon.forget();

    storage.appear();

    QTRY_VERIFY(!stick.isMountedIn(storage));
    QCOMPARE(daemon.calls(), QStringList(stick.unmountOrder()));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestStorageService::storageOfAServiceThatLeftIsNotUnmounted()
{
    const Stick stick;
    Neighbour<Storage> storage;
    storage.appear();
    stick.plug(storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    storage.leave();
    daemon.forget();

    QVERIFY(daemon.change(UsbStorage, false));

    QCOMPARE(daemon.calls(), QStringList());
    QCOMPARE(daemon.logged(), QStringList());
}

/// What could not be unmounted is tried again, but the log is not told again.
void TestStorageService::failureToUnmountIsLoggedOnce()
{
    const Stick stick;
    Neighbour<Storage> storage;
    storage.fail(QStringLiteral("Unmount"), Fault::error(Busy));
    storage.appear();
    stick.plug(storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(UsbStorage, false));

    QTRY_COMPARE(daemon.monitor().calls(QStringLiteral("Unmount")).size(), 2);
    QCOMPARE(daemon.calls(), QStringList({stick.unmountOrder(), stick.unmountOrder()}));
    QCOMPARE(daemon.logged(), QStringList(complaint(stick)));
    QCOMPARE(Caller().policy(UsbStorage).value(), QVariant(false));
}

void TestStorageService::deathInsteadOfUnmountingIsSilent()
{
    const Stick stick;
    Neighbour<Storage> storage;
    storage.fail(QStringLiteral("Unmount"), Fault::death());
    storage.appear();
    stick.plug(storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(UsbStorage, false));

    QTRY_COMPARE(answers(daemon, QStringLiteral("Unmount")), 1);
    QCOMPARE(daemon.calls(), QStringList(stick.unmountOrder()));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestStorageService::storageInUseIsUnmountedWhenItIsFree()
{
    const Stick stick;
    Neighbour<Storage> storage;
    storage.fail(QStringLiteral("Unmount"), Fault::error(Busy));
    storage.appear();
    stick.plug(storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(UsbStorage, false));
    QVERIFY(waitForRefusal(daemon));
    storage.mend();

    QTRY_VERIFY(!stick.isMountedIn(storage));
    QCOMPARE(daemon.logged(), QStringList(complaint(stick)));
}

/// A memory card, which stays forbidden, tells when the stick would have been tried again.
void TestStorageService::storageInUseIsLeftAloneOnceItIsAllowed()
{
    const Stick stick;
    const Stick card{QStringLiteral("card"), QStringLiteral("sdio"), false, true, false};
    Neighbour<Storage> storage;
    storage.fail(QStringLiteral("Unmount"), Fault::error(Busy));
    storage.appear();
    stick.plug(storage);
    card.plug(storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(UsbStorage, false));
    QVERIFY(waitForRefusal(daemon));
    QVERIFY(daemon.change(MemoryCard, false));
    QVERIFY(daemon.change(UsbStorage, true));
    storage.mend();

    QTRY_VERIFY(!card.isMountedIn(storage));
    QCOMPARE(daemon.calls().count(stick.unmountOrder()), 1);
    QVERIFY(stick.isMountedIn(storage));
}

void TestStorageService::eachPlaceIsUnmounted()
{
    const Stick stick;
    Neighbour<Storage> storage;
    storage.appear();
    stick.plug(storage);
    storage.ask([&](Storage &service) {
        service.setMountPoints(stick.path(), {QStringLiteral("/a"), QStringLiteral("/b")});
    });
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(UsbStorage, false));

    QTRY_VERIFY(!stick.isMountedIn(storage));
    QCOMPARE(daemon.calls(), QStringList({stick.unmountOrder(), stick.unmountOrder()}));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestStorageService::storageThatWasNotListedIsUnmountedAtTheNextOccasion_data()
{
    QTest::addColumn<bool>("isMountedLater");
    QTest::newRow("forbidden again") << false;
    QTest::newRow("mounted later") << true;
}

void TestStorageService::storageThatWasNotListedIsUnmountedAtTheNextOccasion()
{
    QFETCH(bool, isMountedLater);
    Stick stick;
    stick.isMounted = !isMountedLater;
    Neighbour<Storage> storage;
    storage.fail(QStringLiteral("GetManagedObjects"), Fault::error());
    storage.appear();
    stick.plug(storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(daemon.change(UsbStorage, false));
    QCOMPARE(daemon.calls(StorageName), QStringList());
    storage.mend();

    if (isMountedLater) {
        stick.mount(storage);
    } else {
        QVERIFY(daemon.change(UsbStorage, true));
        QVERIFY(daemon.change(UsbStorage, false));
    }

    QTRY_VERIFY(!stick.isMountedIn(storage));
    QCOMPARE(daemon.calls(StorageName), QStringList(stick.unmountOrder()));
}

void TestStorageService::nobodyWaitsForTheUnmount()
{
    const Stick stick;
    Neighbour<Storage> storage;
    storage.fail(QStringLiteral("Unmount"), Fault::silence());
    storage.appear();
    stick.plug(storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(UsbStorage, false)); // would fail by its own time-out

    QCOMPARE(daemon.calls(), QStringList(stick.unmountOrder()));
    QCOMPARE(answers(daemon, QStringLiteral("Unmount")), 0);
    QCOMPARE(Caller().policy(MemoryCard).value(), QVariant(true));
}

void TestStorageService::manyDevicesNeedNoQuestionEach()
{
    const int count = 300;
    Neighbour<Storage> storage;
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
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    // A listing that came later would have each stick unmounted again.
    QTRY_COMPARE(answers(daemon, QStringLiteral("GetManagedObjects")), 1);
    QCOMPARE(daemon.policy(UsbStorage), QVariant(true));

    QVERIFY(daemon.change(UsbStorage, false));

    QCOMPARE(daemon.calls(StorageName), orders);
    const auto questions = daemon.monitor().messages([](const BusMessage &message) {
        return message.type == BusMessage::Call && message.destination == StorageName;
    });
    QVERIFY2(questions.size() <= orders.size() + 4, // a few listings
             qPrintable(QString::number(questions.size())));
}

QTEST_GUILESS_MAIN(TestStorageService)
#include "tst_storageservice.moc"
