// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_OBSERVEDDAEMON_H
#define GOVD_TESTS_SUPPORT_OBSERVEDDAEMON_H

#include "support/busmonitor.h"
#include "support/daemon.h"
#include "support/systemlog.h"

namespace Support {

/// The daemon with an eye on everything that it tells the world: on the bus, in the system log and
/// in its own log. What each function gives is complete up to the moment of its call, so what is
/// not there has not happened.
class ObservedDaemon
{
public:
    /// Starts the daemon, again if it has run before, and waits until it serves and rests.
    [[nodiscard]] bool start();

    /// Forgets what was seen so far.
    void forget();

    /// What the daemon has put on the bus about clients and values, in the order of the bus, one
    /// line each: a query of a caller's identity, an audit event, a call of a neighbour, a change
    /// signal, a reply. The bus name @p caller is written as "caller".
    QStringList messages(const QString &caller = QString());

    /// The texts that it has written to the system log.
    QStringList events();

    /// The lines of its own log, but for the one about an absent USB manager: each start without
    /// that neighbour writes it.
    QStringList log();

    Daemon &process() { return m_daemon; }
    BusMonitor &monitor() { return m_monitor; }
    SystemLog &systemLog() { return m_systemLog; }

    /// Its unique name on the bus.
    QString busName() const { return m_busName; }

private:
    SystemLog m_systemLog;
    BusMonitor m_monitor;
    Daemon m_daemon;
    QString m_busName;
    int m_eventMark = 0;
    int m_logMark = 0;
};

} // namespace Support

#endif
