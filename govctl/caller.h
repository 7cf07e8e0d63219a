// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_CALLER_H
#define GOVCTL_CALLER_H

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

    bool isAllowed() const { return right != Right::None; }
    QJsonObject toJson() const;
};

/// Judges this process by the rules of the daemon, in their order. A bus policy that lets even
/// fewer callers through is not looked at.
Caller describeCaller();

#endif
