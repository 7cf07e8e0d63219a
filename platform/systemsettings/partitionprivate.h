// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_PARTITIONPRIVATE_H
#define SYSTEMSETTINGS_PARTITIONPRIVATE_H

#include "partition.h"

#include <QSharedData>

struct PartitionPrivate : public QSharedData
{
    QString objectPath;
    QString devicePath;
    QString mountPath;
    QVariantMap drive;
    Partition::StorageType storageType = Partition::Invalid;
    Partition::Status status = Partition::Unmounted;
};

#endif
