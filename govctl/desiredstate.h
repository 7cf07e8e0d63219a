// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_DESIREDSTATE_H
#define GOVCTL_DESIREDSTATE_H

#include "govctl/policystate.h"

#include <QMap>

/// How a device shall be: what is not named is left alone.
struct DesiredState
{
    QMap<QString, bool> policies;
    QMap<QString, bool> switches;

    /// As a key file with the groups "policy" and "switch".
    QString toText() const;
    QJsonObject toJson() const;
};

/// Reads a file that toText() could have written, @p path, or standard input for "-". Values are
/// taken as on the command line. Whether there are such policies and switches is not looked at.
Result<DesiredState> readDesiredState(const QString &path);

/// How the device is. A policy that only a switch forces off is as it is stored, because the switch
/// is named as well; one that a lock forces off is off.
DesiredState currentState(const Snapshot &snapshot);

#endif
