// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_ENFORCER_POLICYENFORCEMENTTASK_H
#define GOVD_ENFORCER_POLICYENFORCEMENTTASK_H

#include "policytypes.h"

/// One policy to enforce on the running system.
struct PolicyEnforcementTask
{
    PolicyType type;
    bool value; ///< the value to enforce: true when the feature is allowed
};

Q_DECLARE_TYPEINFO(PolicyEnforcementTask, Q_PRIMITIVE_TYPE);

/// A handler: enforces one policy and logs its own failures.
///
/// On the service route the enforcer's mutex is held, which is not recursive: a handler, or a
/// plugin that it asks for another policy's value, deadlocks if it calls back into the enforcer.
using PolicyHandler = void (*)(PolicyEnforcementTask task);

#endif
