// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "partitionmanager.h"

#include "udisksclient.h"

struct PartitionManagerPrivate
{
    UDisks::Client client;
};

PartitionManager::PartitionManager(QObject *parent)
    : QObject(parent)
    , m_data(std::make_unique<PartitionManagerPrivate>())
{
    connect(&m_data->client, &UDisks::Client::partitionAdded, this,
            &PartitionManager::partitionAdded);
}

PartitionManager::~PartitionManager() = default;

QVector<Partition> PartitionManager::partitions(Partition::StorageTypes types) const
{
    return m_data->client.partitions(types);
}

void PartitionManager::unmount(const Partition &partition, const QVariantMap &options)
{
    if (!partition.objectPath().isEmpty())
        m_data->client.unmount(partition, options);
}
