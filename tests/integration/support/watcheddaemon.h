// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_WATCHEDDAEMON_H
#define GOVD_TESTS_SUPPORT_WATCHEDDAEMON_H

#include "support/bus.h"
#include "support/busmonitor.h"
#include "support/daemon.h"
#include "support/systemlog.h"

#include <QVariant>

namespace Support {

/// The daemon, and everybody who can tell what it does: the bus, the system log, its own log.
///
/// The lists below hold what happened since the last forget(), all of it and in order, as text:
/// comparing one with what is expected also proves that nothing else happened.
class WatchedDaemon
{
    Q_DISABLE_COPY(WatchedDaemon)

public:
    WatchedDaemon();

    /// The process, for settings before start() and for ending it.
    Daemon &process() { return m_daemon; }

    BusMonitor &monitor() { return m_monitor; }
    SystemLog &systemLog() { return m_systemLog; }
    Bus &bus() { return m_bus; }

    /// Starts the daemon, again if it has ended, and forgets what happened on the way.
    [[nodiscard]] bool start();

    /// The same, but what happens on the way counts.
    [[nodiscard]] bool startObserved();

    /// Waits until the daemon has done all that it owes, then forgets everything.
    void forget();

    /// Root's write of a policy, over the bus. The answer; invalid when it was an error.
    QVariant set(const QString &key, const QVariant &value);

    /// The same, of which is true only that the daemon has taken the value.
    [[nodiscard]] bool change(const QString &key, bool value);

    /// Root's read of a policy. Invalid when the answer was an error.
    QVariant policy(const QString &key);

    /// What the daemon has sent on the bus, as Wording::exact() has it. Its talk with the bus
    /// itself and introspection are left out.
    QStringList said();

    /// The same with its questions to the bus about clients, as Wording::plain() has it.
    QStringList messages(const QString &caller = QString());

    /// The calls to the services that carry policies out, or to @p service alone, as
    /// Wording::call() has them.
    QStringList calls(const QString &service = QString());

    /// Whether it has neither called @p service nor asked it or the bus about it.
    bool hasLeftAlone(const QString &service);

    /// The signals among said().
    QStringList announcements();

    /// The lines that it has written to the system log.
    QStringList recorded();

    /// The lines of its own log.
    QStringList logged();

    /// The same, but for the one about an absent USB manager: each start without that neighbour
    /// writes it.
    QStringList complaints();

    /// What said() shows for the audit event of a change, and for the announcement of a policy.
    static QString event(const QString &key, const QString &oldText, const QString &newText);
    static QString announcement(const QString &key, bool value);

    /// The text of the audit event of a change.
    static QString eventText(const QString &key, const QString &oldText, const QString &newText);

private:
    QVariant call(const QString &method, const QVariantList &arguments);
    QString uniqueName();

    /// What the daemon has sent, but for introspection.
    QVector<BusMessage> sent();

    Bus m_bus;
    BusMonitor m_monitor;
    SystemLog m_systemLog;
    Daemon m_daemon;
    int m_systemLogStart = 0;
    int m_logStart = 0;
};

} // namespace Support

#endif
