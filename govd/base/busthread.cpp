// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "busthread.h"

#include "names.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <dbus/dbus.h>

#include <limits>

void BusThread::catchUp()
{
    // The bus sends in order: when GetId returns, the thread has received NameAcquired, but may
    // still have it in its event queue. QtDBus does not read the list for calls to the bus itself.
    QDBusConnection::systemBus().call(
        QDBusMessage::createMethodCall(Names::BusDaemon.service, Names::BusDaemon.path,
                                       Names::BusDaemon.interface, QStringLiteral("GetId")));
    // connectToPeer() waits for an event of its own in the same queue, so NameAcquired has been
    // handled when it returns. The empty address makes no connection.
    const QString nowhere = QStringLiteral("nowhere");
    QDBusConnection::connectToPeer(QString(), nowhere);
    QDBusConnection::disconnectFromPeer(nowhere);
}

void BusThread::liftLimits()
{
    auto *connection =
        static_cast<DBusConnection *>(QDBusConnection::systemBus().internalPointer());
    if (!connection)
        return;
    dbus_connection_set_max_received_size(connection, std::numeric_limits<long>::max());
    dbus_connection_set_max_received_unix_fds(connection, std::numeric_limits<long>::max());
}
