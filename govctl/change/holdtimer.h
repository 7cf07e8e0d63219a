// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_HOLDTIMER_H
#define GOVCTL_HOLDTIMER_H

#include "result.h"

#include <QDateTime>
#include <QVector>

/// The systemd timer that starts the service which ends holds.
namespace HoldTimer {

/// Sets it to the first of @p ends. An end that is over is tried again after half a minute. Without
/// any, stops it.
Outcome set(const QVector<QDateTime> &ends);

} // namespace HoldTimer

#endif
