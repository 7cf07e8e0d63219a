// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_WRITING_H
#define GOVCTL_WRITING_H

#include "govctl/evidence.h"
#include "govctl/output.h"

#include <QJsonArray>

#include <functional>

/// What verbs that change something do beside it.

/// Tells a person, once, that the daemon is still at it; for programs, nothing.
std::function<void()> waitingNote(const Output &output);

/// Judges @p policies, which have just been written. What is carried out elsewhere, as an unmount,
/// may take a moment.
QVector<Verdict> settledVerdicts(Daemon &daemon, const QVector<PolicyState> &policies);

/// What there is to say of the force of a policy that has just been written: nothing of one that is
/// in force as far as one can see.
QStringList forceNotes(const Verdict &verdict);

#endif
