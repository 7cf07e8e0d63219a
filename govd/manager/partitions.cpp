// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "partitions.h"

#include "policymanager.h"
#include "removablestorage.h"

PartitionManager partitionManager; // NOLINT(cert-err58-cpp): built before main, without the bus

void PolicyManager::processPartition(const Partition &partition)
{
    const std::optional<PolicyType> type = governingPolicy(partition);
    if (!type || policyValue(typeToKey(*type)).toBool())
        return;
    if (isMountedExternally(partition))
        partitionManager.unmount(partition, QVariantMap());
}
