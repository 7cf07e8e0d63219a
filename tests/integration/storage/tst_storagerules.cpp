// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/facts.h"
#include "support/files.h"
#include "support/stick.h"
#include "support/watcheddaemon.h"

#include <QTest>

using Simulator::Storage;
using namespace Support;

namespace {

/// All of bus, storage type, status and forbidden policy, with the outcome.
void addRows()
{
    struct Bus
    {
        const char *name;
        const char *governedBy;
    };
    const QVector<Bus> buses{{"sdio", "32"}, {"usb", "33"},        {"", "32"},
                             {"none", "32"}, {"ieee1394", "none"}, {"thunderbolt", "none"}};

    QTest::addColumn<QString>("bus");
    QTest::addColumn<bool>("isSystem");
    QTest::addColumn<bool>("wasMounted");
    QTest::addColumn<QString>("forbidden");
    QTest::addColumn<bool>("isUnmounted");
    for (const Bus &bus : buses) {
        for (int i = 0; i < 8; ++i) {
            const bool isSystem = (i & 1) != 0;
            const bool wasMounted = (i & 2) != 0;
            const char *forbidden = (i & 4) != 0 ? "33" : "32";
            const bool isUnmounted =
                !isSystem && wasMounted && qstrcmp(bus.governedBy, forbidden) == 0;
            QTest::addRow("bus \"%s\", %s, %s, %s forbidden", bus.name,
                          isSystem ? "internal" : "external", wasMounted ? "mounted" : "unmounted",
                          forbidden)
                << QString::fromLatin1(bus.name) << isSystem << wasMounted
                << (qstrcmp(forbidden, "33") == 0 ? UsbStorage : MemoryCard) << isUnmounted;
        }
    }
}

} // namespace

/// Which partitions are unmounted. When the daemon looks, and what happens around it, is in
/// tst_storageoccasions.
class TestStorageRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void sweepUnmountsWhatThePolicyForbids_data();
    void sweepUnmountsWhatThePolicyForbids();
    void pluggedInPartitionIsUnmountedWhileForbidden_data();
    void pluggedInPartitionIsUnmountedWhileForbidden();
    void allowedStorageIsLeftAlone_data();
    void allowedStorageIsLeftAlone();
};

void TestStorageRules::sweepUnmountsWhatThePolicyForbids_data()
{
    addRows();
}

void TestStorageRules::sweepUnmountsWhatThePolicyForbids()
{
    QFETCH(QString, bus);
    QFETCH(bool, isSystem);
    QFETCH(bool, wasMounted);
    QFETCH(QString, forbidden);
    QFETCH(bool, isUnmounted);
    const Stick stick{QStringLiteral("stick"), bus, isSystem, wasMounted, false};
    Neighbour<Storage> storage;
    storage.appear();
    stick.plug(storage);
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QCOMPARE(daemon.calls(storage.name()), QStringList());
    daemon.forget();

    QVERIFY(daemon.change(forbidden, false));

    QCOMPARE(daemon.calls(), isUnmounted ? QStringList(stick.unmountOrder()) : QStringList());
    QTRY_COMPARE(stick.isMountedIn(storage), wasMounted && !isUnmounted);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestStorageRules::pluggedInPartitionIsUnmountedWhileForbidden_data()
{
    addRows();
}

void TestStorageRules::pluggedInPartitionIsUnmountedWhileForbidden()
{
    QFETCH(QString, bus);
    QFETCH(bool, isSystem);
    QFETCH(bool, wasMounted);
    QFETCH(QString, forbidden);
    QFETCH(bool, isUnmounted);
    const Stick stick{QStringLiteral("stick"), bus, isSystem, wasMounted, false};
    Neighbour<Storage> storage;
    storage.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(forbidden, false));
    daemon.forget();

    stick.plug(storage);

    QCOMPARE(daemon.calls(), isUnmounted ? QStringList(stick.unmountOrder()) : QStringList());
    QTRY_COMPARE(stick.isMountedIn(storage), wasMounted && !isUnmounted);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestStorageRules::allowedStorageIsLeftAlone_data()
{
    QTest::addColumn<QString>("bus");
    QTest::newRow("memory card") << QStringLiteral("sdio");
    QTest::newRow("USB") << QStringLiteral("usb");
    QTest::newRow("no bus") << QString();
}

void TestStorageRules::allowedStorageIsLeftAlone()
{
    QFETCH(QString, bus);
    const Stick stick{QStringLiteral("stick"), bus, false, true, false};
    Neighbour<Storage> storage;
    storage.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    stick.plug(storage);

    QCOMPARE(daemon.calls(), QStringList());
    QVERIFY(stick.isMountedIn(storage));
}

QTEST_GUILESS_MAIN(TestStorageRules)
#include "tst_storagerules.moc"
