// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_ENFORCER_POLICYENFORCEMENTTASK_H
#define GOVD_ENFORCER_POLICYENFORCEMENTTASK_H

#include "daemon/policytypes.h"

/// One change to be carried out on the running system.
struct PolicyEnforcementTask
{
    PolicyType type; ///< the policy that changed
    bool value; ///< its effective value: true when the feature is allowed
};

Q_DECLARE_TYPEINFO(PolicyEnforcementTask, Q_PRIMITIVE_TYPE);

/// Carries out a task. A handler reports its failures in the log itself, and never calls back into
/// the enforcer, whose lock may be held.
using PolicyHandler = void (*)(PolicyEnforcementTask task);

#endif
