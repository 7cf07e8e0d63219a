// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_POLICYSTATE_H
#define GOVCTL_POLICYSTATE_H

#include "govctl/daemon.h"
#include "govctl/storedvalues.h"

#include <QJsonObject>
#include <QString>
#include <QVector>

#include <optional>

/// Why a policy reads as it does.
enum class Reason {
    Stored, ///< as it is stored
    Switch, ///< a switch that is off forces it off
    Lock, ///< a lock forces it off
    File, ///< the file says otherwise: somebody edited it behind the daemon's back
    NoValue, ///< it has no value: it was locked, or could not be saved, when the daemon started
    Unknown, ///< the stored value is not known, so it can be off by itself or by a lock
};

/// One policy with everything that decides how it reads.
struct PolicyState
{
    QString key;
    int type = 0;
    std::optional<bool> value; ///< as it reads now
    std::optional<bool> stored; ///< as the daemon's file has it
    QVector<Daemon::Switch> switches; ///< those that govern it

    Reason reason() const;

    /// The key of the first switch that forces it off, or a null text.
    QString forcingSwitch() const;

    /// Whether it reads otherwise than it is stored.
    bool differs() const { return stored && value != stored; }

    /// Whether the daemon does something on the device for it.
    bool isEnforced() const;

    /// The reason in a few words; empty when there is nothing to explain.
    QString shortReason() const;

    QJsonObject toJson() const;
};

/// The reason as one word for programs.
QString reasonName(Reason reason);

/// The policies that were asked for, all switches, and the file. They are read one after the other,
/// so what changes meanwhile can show in one and not in another.
struct Snapshot
{
    StoredValues file;
    QVector<PolicyState> policies;
    QVector<Daemon::Switch> switches;
};

/// Asks @p daemon, which is open, for the policies @p keys and for everything that decides them.
Result<Snapshot> takeSnapshot(Daemon &daemon, const QStringList &keys);

/// A value for programs: true, false, or null when there is none.
QJsonValue valueToJson(std::optional<bool> value);

#endif
