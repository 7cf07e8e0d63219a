// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_CALLER_H
#define GOVCTL_CALLER_H

#include "daemon.h"

#include <QJsonObject>
#include <QString>

/// Whether the daemon would accept a write from this process, and by which rule.
struct Caller
{
    enum class Right {
        Group, ///< runs in the group of privileged processes
        Root, ///< runs as root
        Member, ///< its user belongs to the group of management agents
        None,
    };

    QString user; ///< names, or numbers where there is no name
    QString group;
    Right right = Right::None;
    std::optional<bool> bus; ///< whether the bus policy allows writes; empty when not asked

    bool isAllowed() const { return right != Right::None && bus.value_or(true); }
    QJsonObject toJson() const;
};

/// Applies the daemon's rules to this process, in the daemon's order, without asking the bus.
Caller describeCaller();

/// The same, and asks the bus too. The bus uses the ids that this process had when it connected.
/// @p daemon is open.
Caller describeCaller(Daemon &daemon);

/// Fails when this process may not write policies and switches. @p daemon is open.
Outcome checkRight(Daemon &daemon);

#endif
