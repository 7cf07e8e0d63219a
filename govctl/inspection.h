// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_INSPECTION_H
#define GOVCTL_INSPECTION_H

#include "govctl/plugincondition.h"
#include "govctl/policystate.h"

/// As much of the daemon as can be found out, and where finding out ended.
struct Inspection
{
    std::optional<Daemon::Owner> owner; ///< of the daemon's name, whoever it is
    PluginConditions plugins; ///< nothing without a daemon, too
    std::optional<Snapshot> snapshot; ///< of all policies
    Outcome failure; ///< nothing when all was found out

    /// The owner for programs; null when there is none.
    QJsonValue ownerToJson() const;
};

Inspection inspectDaemon(std::chrono::milliseconds timeout);

#endif
