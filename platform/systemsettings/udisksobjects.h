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

    /// Whether there is an object at @p path with the interface @p name.
    bool has(const QString &path, const QString &name) const;

    /// Returns the partitions whose storage type is among @p types, ordered by object path.
    QVector<Partition> partitions(Partition::StorageTypes types) const;

    /// Returns the partitions that are new, or newly mounted, since the last call,
    /// ordered by object path.
    ///
    /// A partition that names a drive which is not known yet waits for it: without its drive
    /// nobody can tell what kind of storage it is.
    QVector<Partition> takeNews();

private:
    QVariantMap properties(const QString &path, const QString &interface) const;
    bool isPartition(const QString &path) const;
    bool isDriveKnown(const QString &path) const;
    QVariantMap drive(const QString &path) const;
    Partition partition(const QString &path) const;

    QMap<QString, Interfaces> m_objects;
    QHash<QString, bool> m_mounted; ///< the partitions that have been news, and their last state
    QSet<QString> m_changed; ///< the objects that may be news
};

} // namespace UDisks

#endif
