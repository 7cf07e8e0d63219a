// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_BUS_H
#define GOVD_TESTS_SUPPORT_BUS_H

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QStringList>

namespace Support {

/// The sandbox's system bus, and root's connections to it.
///
/// The bus runs when a test begins, and runs again when this object is gone.
class Bus
{
    Q_DISABLE_COPY(Bus)

public:
    Bus();
    ~Bus();

    bool isRunning() const;

    /// Ends the bus daemon and with it every connection. Returns when it is gone.
    void stop();

    /// Starts the bus daemon. Returns when it listens.
    void start();

    /// A new connection with a name of its own on the bus. Closed when this object is gone.
    QDBusConnection connect();

    /// Sends @p message on a connection of this object and runs the event loop until the reply is
    /// there, so that the caller's own services can serve meanwhile. An error reply, NoReply among
    /// them, comes back like any other.
    QDBusMessage call(const QDBusMessage &message);

    /// Whether somebody owns @p name now.
    bool hasOwner(const QString &name);

    /// Process id of the owner of @p name; 0 when there is none.
    qint64 ownerProcess(const QString &name);

    [[nodiscard]] bool waitForOwner(const QString &name);
    [[nodiscard]] bool waitForNoOwner(const QString &name);

private:
    QDBusConnection ownConnection();
    QDBusMessage ask(const QString &method, const QString &name);

    QStringList m_connections;
    QString m_own;
};

} // namespace Support

#endif
