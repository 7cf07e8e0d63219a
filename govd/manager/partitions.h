// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_MANAGER_PARTITIONS_H
#define GOVD_MANAGER_PARTITIONS_H

#include <systemsettings/partitionmanager.h>

/// Announces the partitions that appear while the daemon runs; processPartition() unmounts through
/// it. It begins with the event loop, so it can be there before the application object.
extern PartitionManager partitionManager;

#endif
