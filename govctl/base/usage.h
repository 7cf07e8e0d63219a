// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_USAGE_H
#define GOVCTL_USAGE_H

#include "result.h"

/// The failure of a command line that is wrong.
Failure usageFailure(const QString &message);

/// The failure @p failure for the unknown @p name of some @p kind, with the nearest of @p known, or
/// with the @p hint where to find them when none is near.
Failure unknownName(const QString &failure, const QString &kind, const QStringList &known,
                    const QString &name, const QString &hint);

/// Reads @p text, the value of @p name, as seconds from @p least to @p most.
Result<double> parseSeconds(const QString &name, const QString &text, double least, double most);

#endif
