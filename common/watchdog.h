// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_COMMON_WATCHDOG_H
#define GOVD_COMMON_WATCHDOG_H

#include <QObject>

/// Keeps the service manager's watchdog (WatchdogSec= of the unit) from ending the process.
///
/// It is told of life only after the bus has answered a question of this process. So a connection
/// that hears nothing any more and a main thread that is stuck both end in a restart. Where no
/// service manager watches, or without libsystemd, none of this asks or tells anything.
namespace Watchdog {

/// Has the bus asked from time to time, as long as @p context lives and the main loop runs.
void start(QObject *context);

/// Notes that the bus has just answered some question.
void busHasAnswered();

/// Asks the bus, and waits for its answer, if the last one is some time ago. To be called after
/// each call that may have kept the main thread waiting for a service.
void checkBus();

} // namespace Watchdog

#endif
