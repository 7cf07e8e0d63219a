// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_ENFORCEMENT_H
#define GOVD_TESTS_SUPPORT_ENFORCEMENT_H

#include "support/busmonitor.h"
#include "support/daemon.h"

namespace Support {

/// The daemon on a fresh installation, and what it does to the rest of the system: the calls that
/// it makes and the lines that it logs.
class Enforcement
{
    Q_DISABLE_COPY(Enforcement)

public:
    /// Resets the daemon's files. It does not run yet, so a test can prepare them.
    Enforcement();

    /// Starts the daemon and waits until it serves. What it does meanwhile is not forgotten.
    [[nodiscard]] bool start();

    /// Changes a policy as root. False unless the daemon says that it took the value.
    [[nodiscard]] bool change(const QString &key, bool value);

    /// The calls of the daemon to the services that carry its policies out, in order: those since
    /// the start or the last forget(), the ones under way included. Each has the form
    /// "SERVICE PATH INTERFACE METHOD SIGNATURE [ARGUMENTS]", the arguments as JSON.
    QStringList calls();

    /// The same as calls(), but only those to @p service.
    QStringList calls(const QString &service);

    /// The lines of the daemon's log since the start or the last forget().
    QStringList log();

    /// The signals of the daemon since the start or the last forget(), as "NAME [ARGUMENTS]".
    QStringList announcements();

    /// Waits for everything under way, and then forgets it.
    void forget();

    Daemon &daemon() { return m_daemon; }
    BusMonitor &monitor() { return m_monitor; }

    /// The form of calls() for one call.
    static QString callText(const QString &target, const QString &method, const QString &signature,
                            const QVariantList &arguments);

private:
    BusMonitor m_monitor;
    Daemon m_daemon;
    QString m_name; ///< the daemon's unique name on the bus
    int m_mark = 0;
};

} // namespace Support

#endif
