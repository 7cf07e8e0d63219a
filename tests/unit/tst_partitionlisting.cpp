// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/unit/storagetest.h"

#include <QtTest>

using namespace StorageNames;
using Simulator::Fault;
using Simulator::ObjectValues;
using Simulator::Storage;

/// What somebody does to the storage.
using Action = std::function<void(Storage &)>;
Q_DECLARE_METATYPE(Action)
Q_DECLARE_METATYPE(Fault)

namespace {

const QString Listing = QStringLiteral("GetManagedObjects");

/// QtDBus waits for an answer for 25 seconds.
constexpr int Timeout = 25000;

/// Fails after a while, in which something else can happen.
Fault lateError()
{
    Fault fault = Fault::error();
    fault.delay = 300;
    return fault;
}

void sayChanged(Storage &storage, const QString &path)
{
    storage.sendSignal(path, PropertiesInterface, QStringLiteral("PropertiesChanged"),
                       {BlockInterface, QVariantMap(), QStringList()});
}

} // namespace

/// A manager that has no good listing asks for another one, but not more often than there is an
/// occasion.
class tst_PartitionListing : public StorageTest
{
    Q_OBJECT

private Q_SLOTS:
    void asksAgainWhenAskedAgain_data();
    void asksAgainWhenAskedAgain();
    void asksAgainWhenASignalNamesTheUnknown_data();
    void asksAgainWhenASignalNamesTheUnknown();
    void asksAgainForWhatWasNamedMeanwhile();
    void asksNoMoreOftenThanThereIsAnOccasion();
    void asksOnlyOnceAtATime();
    void asksNoMoreOnceItKnows();
    void followsSignalsWithoutAnyListing();

private:
    void failToList(const Fault &fault) const
    {
        there([&] { m_storage->setFault(Listing, fault); });
    }

    void list() const
    {
        there([this] { m_storage->clearFaults(); });
    }
};

void tst_PartitionListing::asksAgainWhenAskedAgain_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::newRow("error") << Fault::error();
    QTest::newRow("another shape") << Fault::wrongAnswer({QStringLiteral("text")});
    QTest::newRow("time-out") << Fault::silence();
}

void tst_PartitionListing::asksAgainWhenAskedAgain()
{
    QFETCH(Fault, fault);
    appear();
    plug(usbStick());
    plug(blockDevice(MountPoint));
    failToList(fault);
    Observed observed;
    QElapsedTimer timer;
    timer.start();
    QVERIFY(observed.manager.partitions(Any).isEmpty());
    QVERIFY(timer.elapsed() < 2 * Timeout);
    list();

    const auto found = observed.manager.partitions(Any);
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.at(0).status(), Partition::Mounted);
    QCOMPARE(found.at(0).drive().value(QStringLiteral("connectionBus")), QVariant(1));
    QTRY_COMPARE(observed.announcedPaths(), QStringList(BlockPath));
    QVERIFY(passSentinel(observed));
    QCOMPARE(observed.announcedPaths(), QStringList(BlockPath));
    QCOMPARE(calls("GetManagedObjects"), 2);
}

void tst_PartitionListing::asksAgainWhenASignalNamesTheUnknown_data()
{
    QTest::addColumn<Action>("action");
    QTest::addColumn<int>("others");
    QTest::newRow("mounted") << Action([](Storage &storage) {
        storage.setMountPoints(BlockPath, MountPoint);
    }) << 0;
    QTest::newRow("another device") << Action([](Storage &storage) {
        storage.plug(Simulator::Block{QStringLiteral("another"), {}});
    }) << 1;
}

void tst_PartitionListing::asksAgainWhenASignalNamesTheUnknown()
{
    QFETCH(Action, action);
    QFETCH(int, others);
    appear();
    plug(usbStick());
    plug(blockDevice(MountPoint));
    failToList(Fault::error());
    Observed observed;
    QTRY_COMPARE(calls("GetManagedObjects"), 1);
    list();

    there([&] { action(*m_storage); });
    QTRY_VERIFY(observed.announcedPaths().contains(BlockPath));
    QVERIFY(passSentinel(observed));
    QCOMPARE(observed.announced.size(), 1 + others);
    QCOMPARE(calls("GetManagedObjects"), 2);
}

void tst_PartitionListing::asksAgainForWhatWasNamedMeanwhile()
{
    appear();
    plug(usbStick());
    plug(blockDevice());
    failToList(lateError());
    Observed observed;
    QTRY_COMPARE(calls("GetManagedObjects"), 1);
    list();

    // Delivered before the error is.
    there([this] { m_storage->setMountPoints(BlockPath, MountPoint); });
    QTRY_COMPARE(observed.announcedPaths(), QStringList(BlockPath));
    QCOMPARE(observed.announced.at(0).status(), Partition::Mounted);
    QCOMPARE(calls("GetManagedObjects"), 2);
}

void tst_PartitionListing::asksNoMoreOftenThanThereIsAnOccasion()
{
    appear();
    failToList(Fault::error());
    Observed observed;
    QTRY_COMPARE(calls("GetManagedObjects"), 1);

    // It is heard of for the first time only once.
    plug(blockDevice({}, {}));
    QTRY_COMPARE(observed.announced.size(), 1);
    QTRY_COMPARE(calls("GetManagedObjects"), 2);
    for (int i = 0; i < 10; ++i) {
        const int before = observed.announced.size();
        there([this] { m_storage->setMountPoints(BlockPath, MountPoint); });
        QTRY_COMPARE(observed.announced.size(), before + 1);
        there([this] { m_storage->setMountPoints(BlockPath, {}); });
    }
    QCOMPARE(calls("GetManagedObjects"), 2);

    for (int question = 3; question <= 5; ++question) {
        observed.manager.partitions(Any);
        QCOMPARE(calls("GetManagedObjects"), question);
    }
}

void tst_PartitionListing::asksOnlyOnceAtATime()
{
    appear();
    failToList(lateError());
    Observed observed;
    QTRY_COMPARE(calls("GetManagedObjects"), 1);

    constexpr int many = 50;
    there([this] {
        for (int i = 0; i < many; ++i)
            sayChanged(*m_storage, BlockPath + QString::number(i));
    });
    // However many there are, one question follows the one that is under way.
    QTRY_COMPARE(calls("GetManagedObjects"), 2);
    observed.manager.partitions(Any);
    QCOMPARE(calls("GetManagedObjects"), 2);
    observed.manager.partitions(Any);
    QCOMPARE(calls("GetManagedObjects"), 3);
}

void tst_PartitionListing::asksNoMoreOnceItKnows()
{
    appear();
    failToList(Fault::error());
    Observed observed;
    observed.manager.partitions(Any);
    list();
    observed.manager.partitions(Any);
    QCOMPARE(calls("GetManagedObjects"), 2);

    observed.manager.partitions(Any);
    there([this] { sayChanged(*m_storage, BlockPath); });
    QVERIFY(passSentinel(observed));
    QCOMPARE(calls("GetManagedObjects"), 2);
}

/// A service that never lists must not delay what it tells.
void tst_PartitionListing::followsSignalsWithoutAnyListing()
{
    appear();
    failToList(Fault::error());
    Observed observed;
    QTRY_COMPARE(calls("GetManagedObjects"), 1);
    failToList(Fault::silence());

    plug(usbStick());
    QTRY_COMPARE(calls("GetManagedObjects"), 2);
    plug(blockDevice(MountPoint));
    QTRY_COMPARE(observed.announcedPaths(), QStringList(BlockPath));
    there([this] {
        m_storage->setMountPoints(BlockPath, {});
        m_storage->setMountPoints(BlockPath, MountPoint);
    });
    QTRY_COMPARE(observed.announced.size(), 2);
    QCOMPARE(observed.announced.at(1).drive().value(QStringLiteral("connectionBus")), QVariant(1));
    QCOMPARE(calls("GetManagedObjects"), 2);
}

QTEST_GUILESS_MAIN(tst_PartitionListing)
#include "tst_partitionlisting.moc"
