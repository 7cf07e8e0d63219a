// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_WATCHDOG_H
#define GOVD_BASE_WATCHDOG_H

#include <QObject>

/// Keeps the service manager's watchdog (WatchdogSec= of the unit) from ending the process.
///
/// It reports to it only after the bus has answered a question. So a connection that hears nothing
/// any more and a main thread that is stuck both end in a restart. Where no service manager
/// watches, or without libsystemd, it asks and reports nothing.
class Watchdog : public QObject
{
    Q_OBJECT

public:
    /// Checks the bus before each event of the main thread, so that a flood of calls, which keeps
    /// timers from running, does not count as being stuck; and has an event come when there is
    /// none.
    Watchdog();

    /// Asks the bus, waits for its answer and reports, if the last report is an eighth of the time
    /// allowed ago. To be called after each call that may have kept the main thread waiting.
    static void checkBus();

    bool eventFilter(QObject *receiver, QEvent *event) override;
};

#endif
