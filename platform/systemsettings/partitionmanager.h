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
/// The managers of a process share what they know of the service. They follow it as it comes and
/// goes, and never start it. When it does not list its devices, they ask again after two seconds,
/// then after twice as long each time, to a minute, and go by its signals until then.
///
/// A manager may be built before the application object and before the service runs, and may be
/// destroyed after the application object. It uses the bus from the start of the event loop, or
/// from the first call of partitions(). Use it from the main thread only.
class Q_DECL_EXPORT PartitionManager : public QObject
{
    Q_OBJECT

public:
    explicit PartitionManager(QObject *parent = nullptr);
    ~PartitionManager() override;

    /// Returns the partitions whose storage type is among @p types, without those that carry a
    /// partition table when @p types holds Partition::ExcludeParents. Empty while the storage
    /// service is absent and before there is an application object.
    ///
    /// The call waits up to five seconds while the service has not listed its devices. After a
    /// failure that took longer than a second it returns at once what is known, until the service
    /// has failed faster or listed them.
    QVector<Partition> partitions(Partition::StorageTypes types) const;

    /// Asks the storage service to unmount @p partition with the @p options of its Unmount
    /// method, and does not wait for the answer. Nothing happens for a partition of no device.
    /// The service unmounts from one place, and there can be several. A failure is logged in the
    /// category "systemsettings": the first one since the partition was unmounted, or the service
    /// was started anew, as a warning, others at debug level, which is off by default. An answer
    /// that changes nothing is a failure from the second time on.
    void unmount(const Partition &partition, const QVariantMap &options);

Q_SIGNALS:
    /// A partition has appeared, or one that was there has been mounted, or a mounted one has got
    /// another drive or storage type. The partitions that are there already when the manager first
    /// looks, or when the service comes back, have appeared.
    ///
    /// A partition that is still mounted after a call of unmount(), of whichever manager, is
    /// announced again: at once, when it was unmounted from one of several places; otherwise after
    /// two seconds and then after twice as long each time, to a minute, for as long as each
    /// announcement leads to another call. It is not announced while a call has no answer yet.
    void partitionAdded(const Partition &partition);

private:
    std::unique_ptr<PartitionManagerPrivate> m_data;
};

#endif
