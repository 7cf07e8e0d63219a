// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_BUSMONITOR_H
#define GOVD_TESTS_SUPPORT_BUSMONITOR_H

#include "support/bus.h"
#include "support/busmessage.h"
#include "support/linefile.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QVector>

#include <functional>

namespace Support {

/// Sees every message that passes the bus, in the order of the bus.
class BusMonitor
{
    Q_DISABLE_COPY(BusMonitor)

public:
    using Condition = std::function<bool(const BusMessage &)>;

    /// Starts to monitor. From here on nothing is missed.
    BusMonitor();
    ~BusMonitor();

    /// Waits until everything that the daemon owes is here: what it does in answer to messages that
    /// have reached it by now. After this, what has not been seen has not happened. Without a
    /// daemon on the bus the same as settleBus().
    void settle();

    /// Waits until everything is here that the bus has taken by now, whatever the daemon does.
    void settleBus();

    /// Forgets all messages that the bus has taken by now.
    void clear();

    /// The messages since the start, or the last clear(), that meet @p condition.
    QVector<BusMessage> messages(const Condition &condition = {}) const;

    /// The calls of @p method, of all senders or of the one with the unique name @p sender.
    QVector<BusMessage> calls(const QString &method, const QString &sender = QString()) const;

    /// The signals called @p name, of whatever sender.
    QVector<BusMessage> announcements(const QString &name) const;

    /// Waits for a message that meets @p condition, one that has been seen already included.
    [[nodiscard]] bool waitFor(const Condition &condition);

    /// The unique name that @p name has or had last, as far as was seen since the last clear().
    QString uniqueName(const QString &name);

private:
    void passDaemon();

    QTemporaryDir m_directory;
    LineFile m_output;
    QProcess m_process;
    Bus m_bus;
    int m_start = 0;
};

} // namespace Support

#endif
