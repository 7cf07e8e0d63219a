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
    // The bus answers after what it has sent before, so after this the thread has received it. A
    // call to the bus itself does not look through the list.
    QDBusConnection::systemBus().call(
        QDBusMessage::createMethodCall(Names::BusDaemon.service, Names::BusDaemon.path,
                                       Names::BusDaemon.interface, QStringLiteral("GetId")));
    // The thread makes connections, too, and only when it has done what came before. This one leads
    // nowhere.
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
