// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_PARTITIONMANAGER_H
#define SYSTEMSETTINGS_PARTITIONMANAGER_H

#include "partition.h"

#include <QObject>
#include <QVector>

#include <memory>

struct PartitionManagerPrivate;

/// Finds and unmounts the partitions of the device's drives, through the storage service UDisks2
/// on the system bus.
///
/// A manager may be built before the application object and before the service runs, and may be
/// destroyed after the application object. It does not touch the bus before the event loop runs,
/// unless it is asked something. It follows the service as it comes and goes, and never starts
/// it. Used from the main thread only.
class Q_DECL_EXPORT PartitionManager : public QObject
{
    Q_OBJECT

public:
    explicit PartitionManager(QObject *parent = nullptr);
    ~PartitionManager() override;

    /// Returns the partitions whose storage type is among @p types, without those that carry a
    /// partition table when @p types holds Partition::ExcludeParents. Empty, and silent, while
    /// the storage service is absent and before there is an application object. The first call
    /// waits for the service's answer, later ones only while none of its answers has been good.
    QVector<Partition> partitions(Partition::StorageTypes types) const;

    /// Asks the storage service to unmount @p partition with the @p options of its Unmount
    /// method, and does not wait for the answer. Nothing happens for a partition of no device.
    /// The service unmounts from one place, and there can be several. A failure is logged in the
    /// category "systemsettings": the first one since the partition was unmounted as a warning,
    /// others at debug level, which is off by default.
    void unmount(const Partition &partition, const QVariantMap &options);

Q_SIGNALS:
    /// A partition has appeared, or one that was there has been mounted. The partitions that are
    /// there already when the manager first looks, or when the service comes back, have appeared.
    ///
    /// Announced again, by every manager of the process whichever was asked to unmount it: one that
    /// is mounted after it was unmounted from one place, at once; and one that could not be
    /// unmounted, while it stays mounted, after two seconds and then after twice as long each time,
    /// to a minute.
    void partitionAdded(const Partition &partition);

private:
    std::unique_ptr<PartitionManagerPrivate> m_data;
};

#endif
