// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_ENFORCER_POLICYENFORCEMENTTASK_H
#define GOVD_ENFORCER_POLICYENFORCEMENTTASK_H

#include "policytypes.h"

/// One change to be carried out on the running system.
struct PolicyEnforcementTask
{
    PolicyType type; ///< the policy that changed
    bool value; ///< its effective value: true when the feature is allowed
};

Q_DECLARE_TYPEINFO(PolicyEnforcementTask, Q_PRIMITIVE_TYPE);

/// Carries out a task. A handler reports its failures in the log itself. The enforcer's lock may be
/// held: a handler never calls back into the enforcer, and neither may what it asks, such as the
/// plugins behind another policy's value.
using PolicyHandler = void (*)(PolicyEnforcementTask task);

#endif
