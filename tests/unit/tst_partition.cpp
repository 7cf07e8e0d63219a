// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <systemsettings/partition.h>

#include <QTest>

class TestPartition : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void partitionOfNoDevice();
};

void TestPartition::partitionOfNoDevice()
{
    const Partition partition;
    QCOMPARE(partition.objectPath(), QString());
    QCOMPARE(partition.devicePath(), QString());
    QCOMPARE(partition.mountPath(), QString());
    QCOMPARE(partition.drive(), QVariantMap());
    QCOMPARE(partition.storageType(), Partition::Invalid);
    QCOMPARE(partition.status(), Partition::Unmounted);
}

QTEST_GUILESS_MAIN(TestPartition)
#include "tst_partition.moc"
