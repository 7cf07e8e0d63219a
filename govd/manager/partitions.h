// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_MANAGER_PARTITIONS_H
#define GOVD_MANAGER_PARTITIONS_H

#include <systemsettings/partitionmanager.h>

/// Signals the partitions that appear while the daemon runs; processPartition() unmounts through
/// it. It may exist before the application object, because it announces from the event loop on.
extern PartitionManager partitionManager;

#endif
