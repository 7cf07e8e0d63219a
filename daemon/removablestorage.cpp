// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "daemon/removablestorage.h"

#include "common/watchdog.h"
#include "daemon/policymanager.h"
#include "daemon/policytypes.h"
#include "enforcer/handlers.h"

#include <optional>

PartitionManager partitionManager; // NOLINT(cert-err58-cpp): built before main, without the bus

namespace {

/// The policy that governs storage on the drive's bus; none for a bus that no policy governs.
///
/// A drive that does not tell its bus counts as being on the memory-card bus, the number 0.
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

} // namespace

void PolicyManager::processPartition(const Partition &partition)
{
    const std::optional<PolicyType> type = governingPolicy(partition);
    if (!type || policyValue(typeToKey(*type)).toBool())
        return;
    if (isMountedExternally(partition))
        partitionManager.unmount(partition, QVariantMap());
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
