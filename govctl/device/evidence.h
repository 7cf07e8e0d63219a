// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_EVIDENCE_H
#define GOVCTL_EVIDENCE_H

#include "policystate.h"

/// The result of one check whether a policy is in force.
struct Finding
{
    enum class Kind {
        Holds, ///< it is as the policy wants it
        Fails, ///< it differs from what the policy wants
        Absent, ///< the service that the policy's handler calls is not on the bus
        Unseen, ///< it cannot be read
    };

    Kind kind;
    QString text; ///< what was found, or why it could not be read
};

/// Whether a policy is in force.
struct Verdict
{
    enum class State { InForce, NotInForce, NotEnforced, Unseen };

    PolicyState policy;
    QVector<Finding> findings; ///< empty when the policy has no handler

    /// An absent service means "not in force" for a policy that is off. In force is what all checks
    /// confirm.
    State state() const;

    /// Whether a check has failed; an absent service alone does not count.
    bool isContradicted() const;

    /// The texts of all findings, in one line.
    QString text() const;

    /// The texts of the findings Fails and Absent, in one line.
    QString failureText() const;
    QJsonObject toJson() const;
};

/// The state as one word for programs, and as a few for people.
QString stateName(Verdict::State state);
QString stateText(Verdict::State state);

/// Checks on the device whether @p policies are in force. @p daemon is open; a call to a service
/// takes at most two seconds of its deadline.
QVector<Verdict> judge(Daemon &daemon, const QVector<PolicyState> &policies);

#endif
