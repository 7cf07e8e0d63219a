// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_LINEFAILURE_H
#define GOVCTL_LINEFAILURE_H

#include "govctl/result.h"

/// What is wrong with the command line @p arguments, of which @p verbWords were read as a verb and
/// @p rest could not be read. @p isIncomplete says that it ends too early.
Failure lineFailure(const QStringList &arguments, const QStringList &verbWords,
                    const QStringList &rest, bool isIncomplete);

#endif
