// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "removablestorage.h"

#include "handlers.h"
#include "watchdog.h"

#include <systemsettings/partitionmanager.h>

namespace {

// The platform's numbers: what it calls them is its own business.
constexpr int External = 8;
constexpr int Mounted = 2;
constexpr int AllWithoutParents = 0x100f;

} // namespace

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
    return int(partition.storageType()) == External && int(partition.status()) == Mounted;
}

void unmountRemovableStorage(PolicyEnforcementTask task)
{
    // Listens to nothing, unlike the manager in partitions.h. Kept until the process ends.
    static auto *const manager = new PartitionManager;
    if (task.value)
        return;

    const auto partitions = manager->partitions(QFlag(AllWithoutParents));
    Watchdog::checkBus(); // partitions() may have blocked
    for (const Partition &partition : partitions) {
        if (governingPolicy(partition) == task.type && isMountedExternally(partition))
            manager->unmount(partition, QVariantMap());
    }
}
