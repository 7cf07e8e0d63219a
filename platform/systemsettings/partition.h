// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_PARTITION_H
#define SYSTEMSETTINGS_PARTITION_H

#include <QFlags>
#include <QSharedDataPointer>
#include <QString>
#include <QVariantMap>

struct PartitionPrivate;

/// A block device with a file system, as it was when the value was taken. A copy is cheap.
///
/// A block device can be built on others: the content of an encrypted one, a logical volume. Drive
/// and storage type are then those of the device at the bottom. With several at the bottom, one
/// that can be removed is enough for the whole to be external, because a part of what is written
/// goes there; when they are on several buses, there is a partition for each bus.
class Q_DECL_EXPORT Partition
{
public:
    enum StorageType {
        Invalid = 0x00,
        System = 0x01, ///< storage that belongs to the device itself
        User = 0x02, ///< the user's part of the internal storage
        Mass = 0x04, ///< internal storage shared with a host
        External = 0x08, ///< storage that can be removed
        Any = System | User | Mass | External,
        ExcludeParents = 0x1000 ///< leaves out devices that only carry a partition table
    };
    Q_DECLARE_FLAGS(StorageTypes, StorageType)

    enum Status { Unmounted = 0, Mounting = 1, Mounted = 2, Unmounting = 3 };

    /// A partition of no device: Invalid, Unmounted, with an empty drive.
    Partition();
    explicit Partition(PartitionPrivate *data);
    Partition(const Partition &other);
    Partition &operator=(const Partition &other);
    ~Partition();

    /// Name of the device file, for example "/dev/sda1".
    QString devicePath() const;

    /// What the storage service calls this block device: its object path.
    QString objectPath() const;

    /// Where the file system is mounted first, empty while it is not.
    QString mountPath() const;

    /// The drive that holds the partition: "connectionBus" (int: 0 memory card, 1 USB,
    /// 2 IEEE 1394, 3 another one; absent when not known), "vendor" and "model" (texts) and
    /// "removable" (bool). Empty when the partition is on no drive, as on a loop device.
    QVariantMap drive() const;

    StorageType storageType() const;
    Status status() const;

private:
    QSharedDataPointer<PartitionPrivate> m_data;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(Partition::StorageTypes)
Q_DECLARE_TYPEINFO(Partition, Q_MOVABLE_TYPE);

#endif
