// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_DESIREDSTATE_H
#define GOVCTL_DESIREDSTATE_H

#include "policystate.h"

#include <QMap>

/// The wanted values of policies and switches; those that are not named stay as they are.
struct DesiredState
{
    QMap<QString, bool> policies;
    QMap<QString, bool> switches;
    QStringList leftOut; ///< what could not be named, with the reason, one line for each

    /// As a key file with the groups "policy" and "switch"; a comment for each that is left out.
    QString toText() const;
    QJsonObject toJson() const;
};

/// Reads the file @p path, or standard input for "-", in the form of toText(). Values are written
/// as on the command line. Whether the policies and switches exist is not checked.
Result<DesiredState> readDesiredState(const QString &path);

/// The present state, with the values that the daemon has stored. Left out are policies whose
/// stored value is not known, those that a lock keeps off, and switches that a file cannot name.
DesiredState currentState(const Snapshot &snapshot);

#endif
