// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udisksobjects.h"

#include "partitionprivate.h"
#include "udisksnames.h"

#include <algorithm>
#include <utility>

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
/// in between, and is mounted. A further place is no reason to announce it again.
bool isMountedAnew(QStringList before, const QStringList &now)
{
    if (before.isEmpty() || now.isEmpty())
        return !now.isEmpty();
    for (const QString &place : now)
        before.removeOne(place);
    return !before.isEmpty();
}

bool isOfSameKind(const Partition &one, const Partition &other)
{
    return one.drive() == other.drive() && one.storageType() == other.storageType();
}

} // namespace

void Objects::clear()
{
    m_objects.clear();
    m_seen.clear();
}

void Objects::replace(const QMap<QString, Interfaces> &objects)
{
    m_objects.clear();
    for (auto it = objects.begin(); it != objects.end(); ++it)
        add(it.key(), it.value());
    const QStringList paths = m_seen.keys();
    for (const QString &path : paths)
        remove(path, {});
}

void Objects::add(const QString &path, const Interfaces &interfaces)
{
    for (auto it = interfaces.begin(); it != interfaces.end(); ++it) {
        if (!isWanted(it.key()))
            continue;
        m_objects[path].insert(it.key(), readProperties(it.key(), it.value()));
        m_hasChanged = true;
    }
}

void Objects::remove(const QString &path, const QStringList &interfaces)
{
    const auto object = m_objects.find(path);
    if (object != m_objects.end()) {
        for (const QString &interface : interfaces)
            m_hasChanged |= object->remove(interface) > 0;
        if (object->isEmpty())
            m_objects.erase(object);
    }
    if (!isPartition(path))
        m_seen.remove(path);
}

void Objects::change(const QString &path, const QString &interface, const QVariantMap &properties)
{
    if (!has(path, interface))
        return;
    const QVariantMap changed = readProperties(interface, properties);
    QVariantMap &known = m_objects[path][interface];
    for (auto it = changed.begin(); it != changed.end(); ++it)
        known.insert(it.key(), it.value());
    m_hasChanged = m_hasChanged || !changed.isEmpty();
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
    Foundations bottoms = foundations();
    for (auto it = m_objects.begin(); it != m_objects.end(); ++it) {
        if (!isPartition(it.key()))
            continue;
        if (types.testFlag(Partition::ExcludeParents) && it->contains(PartitionTable))
            continue;
        const QVector<Partition> candidates = partitionsOn(bottoms.of(it.key()), it.key());
        for (const Partition &candidate : candidates) {
            if (types & candidate.storageType())
                found.append(candidate);
        }
    }
    return found;
}

QVector<Partition> Objects::partitionsOf(const QString &path) const
{
    return partitionsOn(foundations().of(path), path);
}

QVector<Partition> Objects::takeNews()
{
    QVector<Partition> news;
    if (!std::exchange(m_hasChanged, false))
        return news;
    Foundations foundations = this->foundations();
    for (auto it = m_objects.begin(); it != m_objects.end(); ++it) {
        const QString &path = it.key();
        if (!isPartition(path))
            continue;
        const QStringList places = mountPoints(path);
        const auto last = m_seen.find(path);
        const bool isNew = last == m_seen.end();
        if (!isNew && places.isEmpty()) {
            last->places.clear();
            continue;
        }
        const QStringList bottoms = foundations.of(path);
        if (std::none_of(bottoms.begin(), bottoms.end(),
                         [this](const QString &bottom) { return isPlaceKnown(bottom); })) {
            if (!isNew)
                last->partitions.clear();
            continue;
        }
        const QVector<Partition> now = partitionsOn(bottoms, path);
        if (isNew || isMountedAnew(last->places, places)
            || !std::equal(now.begin(), now.end(), last->partitions.begin(), last->partitions.end(),
                           isOfSameKind))
            news += now;
        m_seen.insert(path, {places, now});
    }
    return news;
}

QVector<Partition> Objects::announced() const
{
    QVector<Partition> all = partitions(Partition::Any);
    all.erase(std::remove_if(
                  all.begin(), all.end(),
                  [this](const Partition &each) { return !m_seen.contains(each.objectPath()); }),
              all.end());
    return all;
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

/// The block devices on which the one at @p path is built directly, of @p blocks by device file.
/// One that is not among them has the name of its file, at which there is no object. None for a
/// device with a drive.
QStringList Objects::blocksBelow(const QString &path, const QHash<QString, QString> &blocks) const
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
                   [&blocks](const QString &device) { return blocks.value(device, device); });
    return below;
}

/// Finds the block devices on which others are built in the end.
Foundations Objects::foundations() const
{
    QHash<QString, QString> blocks;
    for (auto it = m_objects.begin(); it != m_objects.end(); ++it)
        blocks.insert(it->value(Block).value(QStringLiteral("Device")).toString(), it.key());
    return Foundations([this, blocks](const QString &each) { return blocksBelow(each, blocks); });
}

/// Whether the block device at @p path and the drive that it names are known.
bool Objects::isPlaceKnown(const QString &path) const
{
    const QString drive = drivePath(path);
    return has(path, Block) && (drive.isEmpty() || has(drive, Drive));
}

/// The partitions that the block device at @p path is, when it is built on @p bottoms in the end.
QVector<Partition> Objects::partitionsOn(const QStringList &bottoms, const QString &path) const
{
    QVector<Partition> found;
    QVariantList buses;
    QString place = path; // of a device that is on nothing removable
    for (const QString &bottom : bottoms) {
        if (!has(bottom, Block))
            continue;
        if (place == path)
            place = bottom;
        const QVariant bus = drive(bottom).value(ConnectionBus);
        if (isSystem(bottom) || buses.contains(bus))
            continue;
        buses.append(bus);
        found.append(partition(path, bottom));
    }
    if (found.isEmpty())
        found.append(partition(path, place));
    return found;
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
