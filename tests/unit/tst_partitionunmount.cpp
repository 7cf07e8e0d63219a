// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/unit/storagetest.h"

#include <QLoggingCategory>
#include <QtTest>

using namespace StorageNames;
using Simulator::Fault;

class tst_PartitionUnmount : public StorageTest
{
    Q_OBJECT

private Q_SLOTS:
    void unmounts();
    void unmountsWithOptions();
    void unmountsNothing();
    void doesNotWaitForUnmount();
    void failsToUnmountSilently();
    void tellsFailuresToWhoWantsThem();
    void unmountsFromTheAnnouncement();
};

void tst_PartitionUnmount::unmounts()
{
    appear();
    plug(usbStick());
    plug(blockDevice(MountPoint));
    PartitionManager manager;
    manager.unmount(manager.partitions(Any).value(0), {});
    QTRY_COMPARE(manager.partitions(Any).value(0).status(), Partition::Unmounted);
    QCOMPARE(there([this] { return m_storage->blocks().value(BlockPath).mountPoints; }),
             QStringList());
}

void tst_PartitionUnmount::unmountsWithOptions()
{
    appear();
    plug(blockDevice(MountPoint, {}));
    PartitionManager manager;
    const QVariantMap options{{QStringLiteral("force"), true}};
    manager.unmount(manager.partitions(Any).value(0), options);
    QTRY_COMPARE(calls("Unmount"), 1);
    const auto call =
        there([this] { return m_storage->calls(QStringLiteral("Unmount")).value(0); });
    QCOMPARE(call.path, BlockPath);
    QCOMPARE(call.interface, FilesystemInterface);
    QCOMPARE(call.signature, QStringLiteral("a{sv}"));
    QCOMPARE(call.arguments, QVariantList{options});
}

void tst_PartitionUnmount::unmountsNothing()
{
    appear();
    Observed observed;
    observed.manager.unmount(Partition(), {});
    QVERIFY(passSentinel(observed));
    QCOMPARE(there([this] { return m_storage->calls().size(); }), 1);
}

void tst_PartitionUnmount::doesNotWaitForUnmount()
{
    appear();
    plug(blockDevice(MountPoint, {}));
    there([this] { m_storage->setFault(QStringLiteral("Unmount"), Fault::silence()); });
    PartitionManager manager;
    const Partition partition = manager.partitions(Any).value(0);
    QElapsedTimer timer;
    timer.start();
    manager.unmount(partition, {});
    QVERIFY(timer.elapsed() < 5000);
    QTRY_COMPARE(calls("Unmount"), 1);
}

void tst_PartitionUnmount::failsToUnmountSilently()
{
    appear();
    plug(blockDevice({}, {}));
    PartitionManager manager;
    const Partition partition = manager.partitions(Any).value(0);
    manager.unmount(partition, {});
    QTRY_COMPARE(calls("Unmount"), 1);
    there([this] { m_storage->leave(); });
    QTRY_VERIFY(manager.partitions(Any).isEmpty());
    manager.unmount(partition, {});
    // That nothing has been logged is looked at after each test.
}

void tst_PartitionUnmount::tellsFailuresToWhoWantsThem()
{
    static QStringList lines;
    lines.clear();
    QLoggingCategory::setFilterRules(QStringLiteral("systemsettings.debug=true"));
    const QtMessageHandler previous = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext &context, const QString &text) {
            if (type == QtDebugMsg && qstrcmp(context.category, "systemsettings") == 0)
                lines.append(text);
        });
    appear();
    plug(blockDevice({}, {}));
    PartitionManager manager;
    manager.unmount(manager.partitions(Any).value(0), {});
    const bool isTold = QTest::qWaitFor([] { return !lines.isEmpty(); });
    qInstallMessageHandler(previous);
    QLoggingCategory::setFilterRules(QString());
    QVERIFY(isTold);
    QVERIFY(lines.at(0).contains(BlockPath));
    QVERIFY(lines.at(0).contains(QStringLiteral("org.freedesktop.UDisks2.Error.NotMounted")));
}

void tst_PartitionUnmount::unmountsFromTheAnnouncement()
{
    appear();
    PartitionManager manager;
    connect(&manager, &PartitionManager::partitionAdded, this, [&](const Partition &partition) {
        if (manager.partitions(Any).value(0).status() == Partition::Mounted)
            manager.unmount(partition, {});
    });
    plug(usbStick());
    plug(blockDevice(MountPoint));
    for (int round = 1; round <= 3; ++round) {
        QTRY_COMPARE(calls("Unmount"), round);
        QTRY_COMPARE(manager.partitions(Any).value(0).status(), Partition::Unmounted);
        there([this] { m_storage->setMountPoints(BlockPath, MountPoint); });
    }
}

QTEST_GUILESS_MAIN(tst_PartitionUnmount)
#include "tst_partitionunmount.moc"
