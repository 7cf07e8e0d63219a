// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "removablestorage.h"

#include "handlers.h"
#include "watchdog.h"

#include <systemsettings/partitionmanager.h>

std::optional<PolicyType> governingPolicy(const Partition &partition)
{
    switch (partition.drive().value(QStringLiteral("connectionBus")).toInt()) {
    case 0:
        return PolicyTypes::MemoryCard;
    case 1:
        return PolicyTypes::UsbStorage;
    default:
        return std::nullopt;
    }
}

bool isMountedExternally(const Partition &partition)
{
    return partition.storageType() == Partition::External
        && partition.status() == Partition::Mounted;
}

void unmountRemovableStorage(PolicyEnforcementTask task)
{
    // A manager of its own, which lives until the process ends: to ask the other one would have it
    // watch the bus before the event loop runs, with which it is to begin.
    static auto *const manager = new PartitionManager;
    if (task.value)
        return;

    const auto partitions = manager->partitions(Partition::Any | Partition::ExcludeParents);
    Watchdog::checkBus(); // the storage service may have been waited for
    for (const Partition &partition : partitions) {
        if (governingPolicy(partition) == task.type && isMountedExternally(partition))
            manager->unmount(partition, QVariantMap());
    }
}
