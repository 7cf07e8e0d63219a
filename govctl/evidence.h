// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_EVIDENCE_H
#define GOVCTL_EVIDENCE_H

#include "govctl/policystate.h"

/// One thing that was looked at to tell whether a policy is in force.
struct Finding
{
    enum class Kind {
        Holds, ///< it is as the policy wants it
        Fails, ///< it is otherwise
        Absent, ///< the service that carries the policy out is not on the bus
        Unseen, ///< it cannot be seen
    };

    Kind kind;
    QString text; ///< what was seen, or why nothing was
};

/// Whether a policy is in force.
struct Verdict
{
    enum class State { InForce, NotInForce, NotEnforced, Unseen };

    PolicyState policy;
    QVector<Finding> findings; ///< empty when the daemon does nothing for the policy

    /// A service that is missing counts against a policy that forbids.
    State state() const;

    /// Whether something was seen to be otherwise, not only a service to be missing.
    bool isContradicted() const;

    /// What was found, in one line.
    QString text() const;

    /// The same, but only what speaks against it.
    QString troubleText() const;
    QJsonObject toJson() const;
};

/// The state as one word for programs, and as a few for people.
QString stateName(Verdict::State state);
QString stateText(Verdict::State state);

/// Looks at the device and judges @p policies. @p daemon is open; each service gets at most two
/// seconds of its deadline.
QVector<Verdict> judge(Daemon &daemon, const QVector<PolicyState> &policies);

#endif
