// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_LINEFAILURE_H
#define GOVCTL_LINEFAILURE_H

#include "result.h"

/// The failure for the command line @p arguments, of which @p verbWords were parsed as a verb and
/// @p rest could not be parsed. @p isIncomplete: required arguments are missing at its end.
Failure lineFailure(const QStringList &arguments, bool isIncomplete, const QStringList &verbWords,
                    const QStringList &rest);

#endif
