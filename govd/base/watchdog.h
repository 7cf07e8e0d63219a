// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_WATCHDOG_H
#define GOVD_BASE_WATCHDOG_H

#include <QObject>

/// Reports to the service manager's watchdog (WatchdogSec= of the unit) after the bus has answered.
///
/// So the service manager restarts a daemon whose connection receives nothing any more, or whose
/// main thread is stuck. Without a watchdog or libsystemd, the class calls and reports nothing.
class Watchdog : public QObject
{
    Q_OBJECT

public:
    /// Checks the bus before each event of the main thread: during a flood of calls timers do not
    /// run. A timer makes an event when there is none.
    Watchdog();

    /// Calls the bus, waits for its reply and reports, if the last report is an eighth of the time
    /// allowed ago. Call it after each call that may have blocked the main thread.
    static void checkBus();

    bool eventFilter(QObject *receiver, QEvent *event) override;
};

#endif
