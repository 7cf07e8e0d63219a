// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "partitionmanager.h"

#include "udisksclient.h"

class PartitionManagerPrivate
{
public:
    UDisks::Client client;
};

PartitionManager::PartitionManager(QObject *parent)
    : QObject(parent)
    , d(std::make_unique<PartitionManagerPrivate>())
{
    connect(&d->client, &UDisks::Client::partitionAdded, this, &PartitionManager::partitionAdded);
}

PartitionManager::~PartitionManager() = default;

QVector<Partition> PartitionManager::partitions(Partition::StorageTypes types) const
{
    return d->client.partitions(types);
}

void PartitionManager::unmount(const Partition &partition, const QVariantMap &options)
{
    if (!partition.objectPath().isEmpty())
        d->client.unmount(partition, options);
}
