// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSOBJECTS_H
#define SYSTEMSETTINGS_UDISKSOBJECTS_H

#include "partition.h"
#include "udisksproperties.h"

#include <QHash>
#include <QSet>
#include <QVector>

namespace UDisks {

/// Knows the storage service's objects as far as they have been told, and makes partitions of
/// them. It does not know the bus: it is fed with what came from there.
///
/// A block device that names no drive can be built on others: it decrypts one, or the kernel has
/// made it of several. The devices at the end of that chain say what kind of storage it is. One
/// removable device among them makes it removable, whatever the others are, because part of what
/// is written to it goes there; and when several are, on different buses, it is a partition of
/// each of them, so that whoever forbids one bus finds it.
class Objects
{
public:
    /// Forgets everything.
    void clear();

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

    /// Returns the partitions that since the last call are new, newly mounted, or still mounted
    /// after an unmount, ordered by object path.
    ///
    /// A partition waits for the drives and devices that it names and that are not known yet:
    /// without them nobody can tell what kind of storage it is.
    QVector<Partition> takeNews();

private:
    QVariantMap properties(const QString &path, const QString &interface) const;
    bool isPartition(const QString &path) const;
    QString drivePath(const QString &path) const;
    QVariantMap drive(const QString &path) const;
    bool isSystem(const QString &path) const;
    QString blockOf(const QString &device) const;
    QStringList blocksBelow(const QString &path) const;
    QStringList blocksAtBottom(const QString &path) const;
    enum Extent { SomeOfIt, AllOfIt };
    bool isPlaceKnown(const QString &path, Extent extent) const;
    Partition partition(const QString &path, const QString &bottom) const;

    QMap<QString, Interfaces> m_objects;
    QHash<QString, QStringList> m_mounted; ///< where the partitions that were news were mounted
    QSet<QString> m_changed; ///< the objects that may be news
    QSet<QString> m_partlyKnown; ///< news with a part of whose place nothing is known
};

} // namespace UDisks

#endif
