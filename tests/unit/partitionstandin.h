// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_UNIT_PARTITIONSTANDIN_H
#define GOVD_TESTS_UNIT_PARTITIONSTANDIN_H

#include <systemsettings/partitionmanager.h>

#include <QStringList>

#include <optional>

/// Takes the place of the library's partition managers in a test that is linked with it: there are
/// whatever partitions the test likes, and what the managers are asked to do is noted down.
struct PartitionStandIn
{
    /// The one and only: every manager shows the same partitions.
    static PartitionStandIn &instance();

    /// A partition of that object path; a drive that is given no @p bus does not tell it.
    static Partition partition(const QString &path, int storageType, int status,
                               std::optional<int> bus);

    /// The object paths of what was to be unmounted.
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

    QVector<Partition> partitions; ///< whatever types are asked for
    QVector<Question> questions; ///< for partitions, since forget()
    QVector<Order> orders; ///< to unmount, since forget()
};

#endif
