// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSOBJECTS_H
#define SYSTEMSETTINGS_UDISKSOBJECTS_H

#include "partition.h"
#include "udisksproperties.h"
#include "udisksstack.h"

#include <QHash>
#include <QVector>

namespace UDisks {

/// Knows the objects of the storage service as far as it has described them, and makes partitions
/// of them. It is fed with what came from the bus, and does not use the bus itself.
///
/// A block device that names no drive can be built on others: it decrypts one, or the kernel has
/// made it of several. The devices at the end of that chain say what kind of storage it is. One
/// removable device among them makes it removable, whatever the others are, because part of what
/// is written to it goes there. When several of them are removable and on different buses, it is a
/// partition of each bus, so that whoever forbids one bus finds it.
class Objects
{
public:
    /// Forgets everything.
    void clear();

    /// Takes a listing of all objects, by path, with their interfaces as received.
    void replace(const QMap<QString, Interfaces> &objects);

    /// Takes the @p interfaces, as received, of the object at @p path: new ones, or new values of
    /// those that it has.
    void add(const QString &path, const Interfaces &interfaces);

    void remove(const QString &path, const QStringList &interfaces);

    /// Takes changed @p properties, as received, of an @p interface. Ignored when the object does
    /// not have it.
    void change(const QString &path, const QString &interface, const QVariantMap &properties);

    /// Whether there is an object at @p path.
    bool knows(const QString &path) const { return m_objects.contains(path); }

    /// Whether there is an object at @p path with the interface @p name.
    bool has(const QString &path, const QString &name) const;

    /// Returns the places where the file system of the object at @p path is mounted.
    QStringList mountPoints(const QString &path) const;

    /// Returns the partitions whose storage type is among @p types, ordered by object path.
    QVector<Partition> partitions(Partition::StorageTypes types) const;

    /// Returns the partitions that the block device at @p path is: one, but for a device that is
    /// built on removable ones of several buses.
    QVector<Partition> partitionsOf(const QString &path) const;

    /// Returns the partitions that since the last call are new or newly mounted, or are mounted
    /// and still so after an unmount, or with another drive or type. Ordered by object path.
    ///
    /// A partition waits until the service has described the drive that it is on, or one of them:
    /// without a drive its kind is not known, and a mounted one whose drive comes back is news.
    QVector<Partition> takeNews();

    /// Returns the partitions that have been news before and are still there, as they are now.
    QVector<Partition> announced() const;

private:
    struct Seen
    {
        QStringList places; ///< where it was mounted
        QVector<Partition> partitions; ///< with their kind when it was mounted last
    };

    QVariantMap properties(const QString &path, const QString &interface) const;
    bool isPartition(const QString &path) const;
    QString drivePath(const QString &path) const;
    QVariantMap drive(const QString &path) const;
    bool isSystem(const QString &path) const;
    QStringList blocksBelow(const QString &path, const QHash<QString, QString> &blocks) const;
    Foundations foundations() const;
    bool isPlaceKnown(const QString &path) const;
    QVector<Partition> partitionsOn(const QStringList &bottoms, const QString &path) const;
    Partition partition(const QString &path, const QString &bottom) const;

    QMap<QString, Interfaces> m_objects;
    QHash<QString, Seen> m_seen; ///< block devices that have been news, as takeNews() saw them last
    bool m_hasChanged = false; ///< since takeNews()
};

} // namespace UDisks

#endif
