// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_CALLER_H
#define GOVCTL_CALLER_H

#include "govctl/daemon.h"

#include <QJsonObject>
#include <QString>

/// This process as the daemon would judge it if it asked for a change.
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
    std::optional<bool> bus; ///< whether the bus passes writes on; nothing when it was not asked

    bool isAllowed() const { return right != Right::None && bus.value_or(true); }
    QJsonObject toJson() const;
};

/// Judges this process by the rules of the daemon, in their order, without asking the bus.
Caller describeCaller();

/// The same, and lets the bus judge as well, which goes by what this process was when it connected.
/// @p daemon is open.
Caller describeCaller(Daemon &daemon);

/// Fails when this process may not change anything. @p daemon is open.
Outcome checkRight(Daemon &daemon);

#endif
