// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_ENFORCER_REMOVABLESTORAGE_H
#define GOVD_ENFORCER_REMOVABLESTORAGE_H

#include "policytypes.h"

#include <systemsettings/partition.h>

#include <optional>

/// The policy that governs storage on the drive's bus; none for a bus that no policy governs.
///
/// Storage whose drive has no "connectionBus" counts as being on the memory-card bus, number 0.
std::optional<PolicyType> governingPolicy(const Partition &partition);

bool isMountedExternally(const Partition &partition);

#endif
