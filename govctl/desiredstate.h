// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_DESIREDSTATE_H
#define GOVCTL_DESIREDSTATE_H

#include "govctl/policystate.h"

#include <QMap>

/// The wanted values of policies and switches; those that are not named stay as they are.
struct DesiredState
{
    QMap<QString, bool> policies;
    QMap<QString, bool> switches;

    /// As a key file with the groups "policy" and "switch".
    QString toText() const;
    QJsonObject toJson() const;
};

/// Reads the file @p path, or standard input for "-", in the form of toText(). Values are written
/// as on the command line. Whether the policies and switches exist is not checked.
Result<DesiredState> readDesiredState(const QString &path);

/// The present state. A policy that only a switch forces off has its stored value, because the
/// switch is part of the state as well; one that a lock forces off is off.
DesiredState currentState(const Snapshot &snapshot);

#endif
