// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "partition.h"

#include "partitionprivate.h"

Partition::Partition()
    : d(new PartitionPrivate)
{
}

Partition::Partition(PartitionPrivate *data)
    : d(data)
{
}

Partition::Partition(const Partition &other) = default;
Partition &Partition::operator=(const Partition &other) = default;
Partition::~Partition() = default;

QString Partition::devicePath() const
{
    return d->devicePath;
}

QString Partition::objectPath() const
{
    return d->objectPath;
}

QString Partition::mountPath() const
{
    return d->mountPath;
}

QVariantMap Partition::drive() const
{
    return d->drive;
}

Partition::StorageType Partition::storageType() const
{
    return d->storageType;
}

Partition::Status Partition::status() const
{
    return d->status;
}
