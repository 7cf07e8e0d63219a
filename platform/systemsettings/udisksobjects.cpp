// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udisksobjects.h"

#include "partitionprivate.h"
#include "udisksnames.h"
#include "udisksstack.h"

#include <algorithm>

namespace UDisks {
namespace {

constexpr QLatin1String ConnectionBus = latin1("connectionBus");

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

/// Whether what was mounted at @p before and is mounted at @p now has been mounted or unmounted
/// meanwhile, and is mounted. One place more is not worth telling.
bool isMountedAnew(QStringList before, const QStringList &now)
{
    if (before.isEmpty() || now.isEmpty())
        return !now.isEmpty();
    for (const QString &place : now)
        before.removeOne(place);
    return !before.isEmpty();
}

} // namespace

void Objects::clear()
{
    m_objects.clear();
    m_mounted.clear();
    m_changed.clear();
    m_partlyKnown.clear();
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
    m_partlyKnown.remove(path);
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

QStringList Objects::mountPoints(const QString &path) const
{
    return properties(path, Filesystem).value(QStringLiteral("MountPoints")).toStringList();
}

QVector<Partition> Objects::partitions(Partition::StorageTypes types) const
{
    QVector<Partition> found;
    for (auto it = m_objects.begin(); it != m_objects.end(); ++it) {
        if (!isPartition(it.key()))
            continue;
        if (types.testFlag(Partition::ExcludeParents) && it->contains(PartitionTable))
            continue;
        const QVector<Partition> candidates = partitionsOf(it.key());
        for (const Partition &candidate : candidates) {
            if (types & candidate.storageType())
                found.append(candidate);
        }
    }
    return found;
}

QVector<Partition> Objects::partitionsOf(const QString &path) const
{
    QStringList known = blocksAtBottom(path);
    known.erase(std::remove_if(known.begin(), known.end(),
                               [this](const QString &each) { return !has(each, Block); }),
                known.end());
    QVector<Partition> found;
    QVariantList buses;
    for (const QString &bottom : qAsConst(known)) {
        const QVariant bus = drive(bottom).value(ConnectionBus);
        if (isSystem(bottom) || buses.contains(bus))
            continue;
        buses.append(bus);
        found.append(partition(path, bottom));
    }
    if (found.isEmpty())
        found.append(partition(path, known.value(0, path)));
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
        const QStringList places = mountPoints(path);
        const auto known = m_mounted.constFind(path);
        const bool isNews = known == m_mounted.constEnd() || isMountedAnew(*known, places);
        const bool isComplete = isPlaceKnown(path, AllOfIt);
        const bool isCompleteAtLast = isComplete && m_partlyKnown.remove(path);
        if (isNews && !isComplete) {
            m_changed.insert(path);
            if (!isPlaceKnown(path, SomeOfIt))
                continue;
            m_partlyKnown.insert(path);
        }
        m_mounted.insert(path, places);
        if (isNews || isCompleteAtLast)
            news += partitionsOf(path);
        if (m_partlyKnown.contains(path))
            m_changed.insert(path);
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

/// The drive that the block device at @p path names; empty when it names none.
QString Objects::drivePath(const QString &path) const
{
    const QString drive = properties(path, Block).value(QStringLiteral("Drive")).toString();
    return drive == NoObject ? QString() : drive;
}

QVariantMap Objects::drive(const QString &path) const
{
    const QString drive = drivePath(path);
    if (!has(drive, Drive))
        return {};
    const QVariantMap known = properties(drive, Drive);
    QVariantMap described{
        {QStringLiteral("vendor"), known.value(QStringLiteral("Vendor")).toString()},
        {QStringLiteral("model"), known.value(QStringLiteral("Model")).toString()},
        {QStringLiteral("removable"), known.value(QStringLiteral("Removable")).toBool()},
    };
    const QString bus = known.value(QStringLiteral("ConnectionBus")).toString();
    if (!bus.isEmpty())
        described.insert(ConnectionBus, connectionBus(bus));
    return described;
}

bool Objects::isSystem(const QString &path) const
{
    return properties(path, Block).value(QStringLiteral("HintSystem")).toBool();
}

/// The path of the block device with the device file @p device; when there is none, the name of
/// the file, at which there is no object.
QString Objects::blockOf(const QString &device) const
{
    for (auto it = m_objects.begin(); it != m_objects.end(); ++it) {
        if (it->value(Block).value(QStringLiteral("Device")) == device)
            return it.key();
    }
    return device;
}

/// The block devices on which the one at @p path is built directly. None for one with a drive.
QStringList Objects::blocksBelow(const QString &path) const
{
    if (!drivePath(path).isEmpty())
        return {};
    const QVariantMap block = properties(path, Block);
    const QString encrypted = block.value(QStringLiteral("CryptoBackingDevice")).toString();
    if (!encrypted.isEmpty() && encrypted != NoObject)
        return {encrypted};
    // The service does not show the inner devices of a volume, but the kernel does.
    QStringList below = devicesBelow(block.value(QStringLiteral("Device"), path).toString());
    std::transform(below.begin(), below.end(), below.begin(),
                   [this](const QString &device) { return blockOf(device); });
    return below;
}

/// The block devices on which the one at @p path is built in the end.
QStringList Objects::blocksAtBottom(const QString &path) const
{
    return foundations(path, [this](const QString &each) { return blocksBelow(each); });
}

/// Whether everything, or something, is known that tells where the block device at @p path is.
bool Objects::isPlaceKnown(const QString &path, Extent extent) const
{
    const QStringList all = blocksAtBottom(path);
    const auto isKnown = [this](const QString &each) {
        const QString drive = drivePath(each);
        return has(each, Block) && (drive.isEmpty() || has(drive, Drive));
    };
    return extent == AllOfIt ? std::all_of(all.begin(), all.end(), isKnown)
                             : std::any_of(all.begin(), all.end(), isKnown);
}

/// The partition that the block device at @p path is, on the drive of @p bottom.
Partition Objects::partition(const QString &path, const QString &bottom) const
{
    const QStringList places = mountPoints(path);
    auto *data = new PartitionPrivate;
    data->objectPath = path;
    data->devicePath = properties(path, Block).value(QStringLiteral("Device")).toString();
    data->mountPath = places.value(0);
    data->drive = drive(bottom);
    data->storageType = isSystem(bottom) ? Partition::System : Partition::External;
    data->status = places.isEmpty() ? Partition::Unmounted : Partition::Mounted;
    return Partition(data);
}

} // namespace UDisks
