// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "partition.h"

#include "partitionprivate.h"

Partition::Partition()
    : m_data(new PartitionPrivate)
{
}

Partition::Partition(PartitionPrivate *data)
    : m_data(data)
{
}

Partition::Partition(const Partition &other) = default;
Partition &Partition::operator=(const Partition &other) = default;
Partition::~Partition() = default;

QString Partition::devicePath() const
{
    return m_data->devicePath;
}

QString Partition::objectPath() const
{
    return m_data->objectPath;
}

QString Partition::mountPath() const
{
    return m_data->mountPath;
}

QVariantMap Partition::drive() const
{
    return m_data->drive;
}

Partition::StorageType Partition::storageType() const
{
    return m_data->storageType;
}

Partition::Status Partition::status() const
{
    return m_data->status;
}
