// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udisksobjects.h"

#include "partitionprivate.h"
#include "udisksnames.h"

namespace UDisks {
namespace {

/// Returns the number of a drive's connection, by which users of partitions know it.
int connectionBus(const QString &name)
{
    static const QHash<QString, int> numbers{
        {QStringLiteral("sdio"), 0},
        {QStringLiteral("usb"), 1},
        {QStringLiteral("ieee1394"), 2},
    };
    constexpr int otherBus = 3;
    return numbers.value(name, otherBus);
}

} // namespace

void Objects::clear()
{
    m_objects.clear();
    m_mounted.clear();
    m_changed.clear();
}

void Objects::add(const QString &path, const Interfaces &interfaces)
{
    for (auto it = interfaces.begin(); it != interfaces.end(); ++it) {
        if (!isWanted(it.key()))
            continue;
        m_objects[path].insert(it.key(), readProperties(it.key(), it.value()));
        m_changed.insert(path);
    }
}

void Objects::remove(const QString &path, const QStringList &interfaces)
{
    const auto object = m_objects.find(path);
    if (object == m_objects.end())
        return;
    for (const QString &interface : interfaces)
        object->remove(interface);
    if (object->isEmpty())
        m_objects.erase(object);
    if (!isPartition(path))
        m_mounted.remove(path);
}

void Objects::change(const QString &path, const QString &interface, const QVariantMap &properties)
{
    if (!has(path, interface))
        return;
    const QVariantMap changed = readProperties(interface, properties);
    QVariantMap &known = m_objects[path][interface];
    for (auto it = changed.begin(); it != changed.end(); ++it)
        known.insert(it.key(), it.value());
    m_changed.insert(path);
}

bool Objects::has(const QString &path, const QString &name) const
{
    const auto object = m_objects.constFind(path);
    return object != m_objects.constEnd() && object->contains(name);
}

QVector<Partition> Objects::partitions(Partition::StorageTypes types) const
{
    QVector<Partition> found;
    for (auto it = m_objects.begin(); it != m_objects.end(); ++it) {
        if (!isPartition(it.key()))
            continue;
        if (types.testFlag(Partition::ExcludeParents) && it->contains(PartitionTable))
            continue;
        const Partition candidate = partition(it.key());
        if (types & candidate.storageType())
            found.append(candidate);
    }
    return found;
}

QVector<Partition> Objects::takeNews()
{
    QStringList changed = m_changed.values();
    changed.sort();
    m_changed.clear();

    QVector<Partition> news;
    for (const QString &path : qAsConst(changed)) {
        if (!isPartition(path))
            continue;
        const Partition candidate = partition(path);
        const bool isMounted = candidate.status() == Partition::Mounted;
        const auto known = m_mounted.constFind(path);
        const bool isNews = known == m_mounted.constEnd() || (isMounted && !*known);
        if (isNews && !isDriveKnown(path)) {
            m_changed.insert(path);
            continue;
        }
        m_mounted.insert(path, isMounted);
        if (isNews)
            news.append(candidate);
    }
    return news;
}

QVariantMap Objects::properties(const QString &path, const QString &interface) const
{
    return m_objects.value(path).value(interface);
}

bool Objects::isPartition(const QString &path) const
{
    return has(path, Block) && has(path, Filesystem);
}

bool Objects::isDriveKnown(const QString &path) const
{
    const QString drivePath = properties(path, Block).value(QStringLiteral("Drive")).toString();
    return drivePath.isEmpty() || drivePath == NoDrive || has(drivePath, Drive);
}

QVariantMap Objects::drive(const QString &path) const
{
    if (!has(path, Drive))
        return {};
    const QVariantMap known = properties(path, Drive);
    QVariantMap drive{
        {QStringLiteral("vendor"), known.value(QStringLiteral("Vendor")).toString()},
        {QStringLiteral("model"), known.value(QStringLiteral("Model")).toString()},
        {QStringLiteral("removable"), known.value(QStringLiteral("Removable")).toBool()},
    };
    const QString bus = known.value(QStringLiteral("ConnectionBus")).toString();
    if (!bus.isEmpty())
        drive.insert(QStringLiteral("connectionBus"), connectionBus(bus));
    return drive;
}

Partition Objects::partition(const QString &path) const
{
    const QVariantMap block = properties(path, Block);
    const QStringList mountPoints =
        properties(path, Filesystem).value(QStringLiteral("MountPoints")).toStringList();
    const bool isSystem = block.value(QStringLiteral("HintSystem")).toBool();

    auto *data = new PartitionPrivate;
    data->objectPath = path;
    data->devicePath = block.value(QStringLiteral("Device")).toString();
    data->mountPath = mountPoints.value(0);
    data->drive = drive(block.value(QStringLiteral("Drive")).toString());
    data->storageType = isSystem ? Partition::System : Partition::External;
    data->status = mountPoints.isEmpty() ? Partition::Unmounted : Partition::Mounted;
    return Partition(data);
}

} // namespace UDisks
