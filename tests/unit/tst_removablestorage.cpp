// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "handlers.h"
#include "partitions.h"
#include "platform/systemsettings/partitionprivate.h"
#include "policymanager.h"

#include <systemsettings/partitionmanager.h>

#include <QtTest>

#include <memory>
#include <optional>
#include <utility>

namespace {

/// Replaces the library's partition managers: they show the partitions of the test and record what
/// they are asked.
struct PartitionStandIn
{
    /// The only object: every manager shows the same partitions.
    static PartitionStandIn &instance()
    {
        static PartitionStandIn standIn; // the daemon builds a manager before main()
        return standIn;
    }

    /// A partition with that object path; without @p bus its drive has no connection bus.
    static Partition partition(const QString &path, int storageType, int status,
                               std::optional<int> bus)
    {
        auto *data = new PartitionPrivate;
        data->objectPath = path;
        data->storageType = static_cast<Partition::StorageType>(storageType);
        data->status = static_cast<Partition::Status>(status);
        data->drive.insert(QStringLiteral("removable"), true);
        if (bus)
            data->drive.insert(QStringLiteral("connectionBus"), *bus);
        return Partition(data);
    }

    /// The object paths of the partitions that were to be unmounted.
    QStringList unmountedPaths() const
    {
        QStringList paths;
        for (const Order &order : orders)
            paths.append(order.path);
        return paths;
    }

    void forget()
    {
        questions.clear();
        orders.clear();
    }

    struct Question
    {
        const PartitionManager *manager;
        int types;
    };
    struct Order
    {
        const PartitionManager *manager;
        QString path;
        QVariantMap options;
    };

    QVector<Partition> partitions; ///< listed for all types
    QVector<Question> questions; ///< for partitions, since forget()
    QVector<Order> orders; ///< to unmount, since forget()
};

const QString MemoryCard = QStringLiteral("MemoryCardEnabled");
const QString UsbStorage = QStringLiteral("UsbStorageEnabled");
const QString NoPolicy = QStringLiteral("NoPolicy");
const QString MobileData = QStringLiteral("MobileDataEnabled");

/// External and mounted, on the bus at the end of its name.
const QString OnUnknownBus = QStringLiteral("type 8, status 2, bus ?");
const QString OnCardBus = QStringLiteral("type 8, status 2, bus 0");
const QString OnUsb = QStringLiteral("type 8, status 2, bus 1");

/// One partition of each kind, named after it; more kinds than the substitute library can show.
QVector<Partition> everyKind()
{
    const QVector<std::optional<int>> buses{std::nullopt, -1, 0, 1, 2, 3};
    QVector<Partition> partitions;
    for (const int type : {0, 1, 2, 4, 8}) {
        for (const int status : {0, 1, 2, 3}) {
            for (const std::optional<int> bus : buses) {
                const QString busName = bus ? QString::number(*bus) : QStringLiteral("?");
                partitions.append(PartitionStandIn::partition(
                    QStringLiteral("type %1, status %2, bus %3").arg(type).arg(status).arg(busName),
                    type, status, bus));
            }
        }
    }
    return partitions;
}

} // namespace

// The members of the library's class: definitions in the executable take precedence over those in
// the library.

struct PartitionManagerPrivate
{
};

PartitionManager::PartitionManager(QObject *parent)
    : QObject(parent)
{
}

PartitionManager::~PartitionManager() = default;

QVector<Partition> PartitionManager::partitions(Partition::StorageTypes types) const
{
    PartitionStandIn::instance().questions.append({this, int(types)});
    return PartitionStandIn::instance().partitions;
}

void PartitionManager::unmount(const Partition &partition, const QVariantMap &options)
{
    PartitionStandIn::instance().orders.append({this, partition.objectPath(), options});
}

/// Which partitions are unmounted, and by which calls of the platform library.
class TestRemovableStorage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void taskUnmountsWhatItForbids_data();
    void taskUnmountsWhatItForbids();
    void tasksShareAManagerOfTheirOwn();
    void appearingPartitionIsUnmountedWhileForbidden_data();
    void appearingPartitionIsUnmountedWhileForbidden();

private:
    std::unique_ptr<PolicyManager> m_manager;
    PartitionStandIn &m_platform = PartitionStandIn::instance();
};

void TestRemovableStorage::initTestCase()
{
    m_manager = std::make_unique<PolicyManager>(nullptr);
    m_platform.partitions = everyKind();
    QCOMPARE(m_platform.partitions.size(), 120);
}

void TestRemovableStorage::init()
{
    for (const QString &key : {MemoryCard, UsbStorage, NoPolicy, MobileData})
        QVERIFY(m_manager->setPolicyValue(key, true, false));
    m_platform.forget();
}

void TestRemovableStorage::cleanupTestCase()
{
    m_manager.reset();
}

void TestRemovableStorage::taskUnmountsWhatItForbids_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("value");
    QTest::addColumn<QStringList>("unmounted");
    const QStringList none;
    QTest::newRow("no policy, off") << 0 << false << none;
    QTest::newRow("other policy, off") << 5 << false << none;
    QTest::newRow("memory card, off") << 32 << false << QStringList{OnUnknownBus, OnCardBus};
    QTest::newRow("memory card, on") << 32 << true << none;
    QTest::newRow("USB storage, off") << 33 << false << QStringList{OnUsb};
    QTest::newRow("USB storage, on") << 33 << true << none;
}

void TestRemovableStorage::taskUnmountsWhatItForbids()
{
    QFETCH(int, type);
    QFETCH(bool, value);
    QFETCH(QStringList, unmounted);

    unmountRemovableStorage({static_cast<PolicyType>(type), value});

    QCOMPARE(m_platform.unmountedPaths(), unmounted);
    for (const PartitionStandIn::Order &order : std::as_const(m_platform.orders))
        QCOMPARE(order.options, QVariantMap());
    for (const PartitionStandIn::Question &question : std::as_const(m_platform.questions))
        QCOMPARE(question.types, 0x100f);
}

void TestRemovableStorage::tasksShareAManagerOfTheirOwn()
{
    unmountRemovableStorage({PolicyTypes::MemoryCard, false});
    unmountRemovableStorage({PolicyTypes::UsbStorage, false});

    QCOMPARE(m_platform.questions.size(), 2);
    const PartitionManager *const own = m_platform.questions.at(0).manager;
    QVERIFY(own != &partitionManager);
    QCOMPARE(m_platform.questions.at(1).manager, own);
    QCOMPARE(m_platform.orders.size(), 3);
    for (const PartitionStandIn::Order &order : std::as_const(m_platform.orders))
        QCOMPARE(order.manager, own);
}

void TestRemovableStorage::appearingPartitionIsUnmountedWhileForbidden_data()
{
    QTest::addColumn<QStringList>("forbidden");
    QTest::addColumn<QStringList>("unmounted");
    QTest::newRow("nothing") << QStringList() << QStringList();
    QTest::newRow("others") << QStringList{NoPolicy, MobileData} << QStringList();
    QTest::newRow("memory card") << QStringList{MemoryCard} << QStringList{OnUnknownBus, OnCardBus};
    QTest::newRow("USB storage") << QStringList{UsbStorage} << QStringList{OnUsb};
    QTest::newRow("all") << QStringList{MemoryCard, UsbStorage, NoPolicy, MobileData}
                         << QStringList{OnUnknownBus, OnCardBus, OnUsb};
}

void TestRemovableStorage::appearingPartitionIsUnmountedWhileForbidden()
{
    QFETCH(QStringList, forbidden);
    QFETCH(QStringList, unmounted);
    for (const QString &key : std::as_const(forbidden))
        QVERIFY(m_manager->setPolicyValue(key, false, false));
    m_platform.forget();

    for (const Partition &partition : std::as_const(m_platform.partitions))
        m_manager->processPartition(partition);

    QCOMPARE(m_platform.unmountedPaths(), unmounted);
    for (const PartitionStandIn::Order &order : std::as_const(m_platform.orders)) {
        QCOMPARE(order.options, QVariantMap());
        QCOMPARE(order.manager, &partitionManager);
    }
    QCOMPARE(m_platform.questions.size(), 0);
}

QTEST_GUILESS_MAIN(TestRemovableStorage)
#include "tst_removablestorage.moc"
