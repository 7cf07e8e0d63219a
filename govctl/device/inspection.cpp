// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "inspection.h"

#include "knownpolicies.h"

QJsonValue Inspection::ownerToJson() const
{
    if (!owner)
        return QJsonValue::Null;
    return QJsonObject{{QStringLiteral("connection"), owner->connection},
                       {QStringLiteral("user"), static_cast<qint64>(owner->user)}};
}

Inspection inspectDaemon(std::chrono::milliseconds timeout)
{
    Inspection result;
    Daemon daemon(timeout);
    const Result<Daemon::Owner> owner = daemon.findOwner();
    if (!owner) {
        result.failure = owner.failure();
        return result;
    }
    result.owner = *owner;

    if (const auto opened = daemon.open(); !opened) {
        result.failure = opened.failure();
        return result;
    }
    result.plugins = readPluginConditions();
    if (const auto snapshot = takeSnapshot(daemon, KnownPolicies::keys()))
        result.snapshot = *snapshot;
    else
        result.failure = snapshot.failure();
    return result;
}
