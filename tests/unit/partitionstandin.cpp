// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/unit/partitionstandin.h"

#include "platform/systemsettings/partitionprivate.h"

PartitionStandIn &PartitionStandIn::instance()
{
    static PartitionStandIn standIn; // the daemon builds a manager before main()
    return standIn;
}

Partition PartitionStandIn::partition(const QString &path, int storageType, int status,
                                      std::optional<int> bus)
{
    auto *data = new PartitionPrivate;
    data->objectPath = path;
    data->storageType = static_cast<Partition::StorageType>(storageType);
    data->status = static_cast<Partition::Status>(status);
    data->drive.insert(QStringLiteral("removable"), true);
    if (bus)
        data->drive.insert(QStringLiteral("connectionBus"), *bus);
    return Partition(data);
}

QStringList PartitionStandIn::unmountedPaths() const
{
    QStringList paths;
    for (const Order &order : orders)
        paths.append(order.path);
    return paths;
}

void PartitionStandIn::forget()
{
    questions.clear();
    orders.clear();
}

// The members of the library's class: definitions in the executable take precedence over those in
// the library.

struct PartitionManagerPrivate
{
};

PartitionManager::PartitionManager(QObject *parent)
    : QObject(parent)
{
}

PartitionManager::~PartitionManager() = default;

QVector<Partition> PartitionManager::partitions(Partition::StorageTypes types) const
{
    PartitionStandIn::instance().questions.append({this, int(types)});
    return PartitionStandIn::instance().partitions;
}

void PartitionManager::unmount(const Partition &partition, const QVariantMap &options)
{
    PartitionStandIn::instance().orders.append({this, partition.objectPath(), options});
}
