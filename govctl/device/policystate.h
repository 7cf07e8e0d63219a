// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_POLICYSTATE_H
#define GOVCTL_POLICYSTATE_H

#include "daemon.h"
#include "storedvalues.h"

#include <QJsonObject>
#include <QString>
#include <QVector>

#include <optional>

/// Why a policy has its effective value.
enum class Reason {
    Stored, ///< it is the stored value
    Switch, ///< a switch that is off forces it off
    Lock, ///< a lock forces it off, or the file was edited: no more can be found out from outside
    File, ///< the file has another value or none: it was edited while the daemon ran
    NoValue, ///< it has no value: it was locked, or could not be saved, when the daemon started
    Unknown, ///< the stored value is not known, so it can be off by itself or by a lock
};

/// One policy with all that decides its effective value.
struct PolicyState
{
    QString key;
    int type = 0;
    std::optional<bool> value; ///< the effective value
    std::optional<bool> stored; ///< the stored value, from the daemon's file
    QVector<Daemon::Switch> switches; ///< those that govern it
    StoredValues::State file = StoredValues::State::Read; ///< of the daemon's file
    bool canBeLocked = true; ///< whether a lock plugin is installed

    Reason reason() const;

    /// The key of the first switch that forces it off, or a null text.
    QString forcingSwitch() const;

    /// Whether the effective value differs from the one in the file, if that was read.
    bool differs() const { return file == StoredValues::State::Read && value != stored; }

    /// Whether the policy has a handler.
    bool isEnforced() const;

    /// The reason in a few words; empty when there is nothing to explain.
    QString shortReason() const;

    QJsonObject toJson() const;
};

/// The reason as one word for programs.
QString reasonName(Reason reason);

/// The policies that were asked for, all switches, and the file. They are read one after the other,
/// so a change in between can show in some of them only.
struct Snapshot
{
    StoredValues file;
    QVector<PolicyState> policies;
    QVector<Daemon::Switch> switches;
};

/// Reads the policies @p keys, all switches and the file. @p daemon is open.
Result<Snapshot> takeSnapshot(Daemon &daemon, const QStringList &keys);

/// A value as JSON: true, false, or null when there is none.
QJsonValue valueToJson(std::optional<bool> value);

#endif
