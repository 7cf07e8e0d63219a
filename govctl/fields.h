// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_FIELDS_H
#define GOVCTL_FIELDS_H

#include "govctl/policystate.h"

/// Columns of a list of policies, for those who cut text into pieces.
namespace Fields {

/// The names of all of them.
QStringList names();

/// The fields @p names of @p policy, with tabs between.
QString line(const PolicyState &policy, const QStringList &names);

} // namespace Fields

#endif
