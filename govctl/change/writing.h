// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_WRITING_H
#define GOVCTL_WRITING_H

#include "evidence.h"
#include "output.h"
#include "plan.h"

#include <QJsonArray>

#include <functional>

/// Common parts of the verbs that write.

/// Prints once, without --json, that the daemon has not replied yet.
std::function<void()> waitingNote(const Output &output);

/// Checks @p policies, which have just been written, again until they are in force: an unmount, for
/// example, ends after the reply.
QVector<Verdict> settledVerdicts(Daemon &daemon, const QVector<PolicyState> &policies);

/// What a check of policies that have just been written has found.
struct ForceCheck
{
    QStringList notes; ///< on policies that are not in force
    bool isContradicted = false;
};

/// Checks the policies that @p steps have written, and those that their switches govern.
Result<ForceCheck> checkForce(Daemon &daemon, const QVector<Step> &steps);

/// Notes on a policy that has just been written: none if it is in force.
QStringList forceNotes(const Verdict &verdict);

#endif
