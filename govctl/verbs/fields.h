// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_FIELDS_H
#define GOVCTL_FIELDS_H

#include "policystate.h"

/// Columns of the list of policies with --fields, for scripts.
namespace Fields {

/// The names of all columns.
QStringList names();

/// The fields @p names of @p policy, with tabs between.
QString line(const PolicyState &policy, const QStringList &names);

} // namespace Fields

#endif
