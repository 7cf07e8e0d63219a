// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_INSPECTION_H
#define GOVCTL_INSPECTION_H

#include "plugincondition.h"
#include "policystate.h"

/// What could be read from the daemon, and the failure that ended it.
struct Inspection
{
    std::optional<Daemon::Owner> owner; ///< of the daemon's name, root or not
    PluginConditions plugins; ///< empty also without a daemon
    std::optional<Snapshot> snapshot; ///< of all policies
    Outcome failure; ///< empty when all could be read

    /// The owner as JSON; null when there is none.
    QJsonValue ownerToJson() const;
};

Inspection inspectDaemon(std::chrono::milliseconds timeout);

#endif
