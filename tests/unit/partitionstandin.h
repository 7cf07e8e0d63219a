// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_UNIT_PARTITIONSTANDIN_H
#define GOVD_TESTS_UNIT_PARTITIONSTANDIN_H

#include <systemsettings/partitionmanager.h>

#include <QStringList>

#include <optional>

/// Replaces the library's partition managers in a test that is linked with it: they show the
/// partitions of the test and record what they are asked.
struct PartitionStandIn
{
    /// The only object: every manager shows the same partitions.
    static PartitionStandIn &instance();

    /// A partition with that object path; without @p bus its drive has no connection bus.
    static Partition partition(const QString &path, int storageType, int status,
                               std::optional<int> bus);

    /// The object paths of the partitions that were to be unmounted.
    QStringList unmountedPaths() const;

    void forget();

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

#endif
