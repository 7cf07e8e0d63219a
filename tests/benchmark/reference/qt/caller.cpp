// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/qt/caller.h"

#include "benchmark/reference/privilege.h"
#include "names.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <pelloraaccesscontrol/accesscontrol.h>

namespace {

/// The bus's answer about a connection; 0 when the query fails.
uint askBus(const QDBusConnection &bus, const QString &question, const QString &sender)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        Names::BusDaemon.service, Names::BusDaemon.path, Names::BusDaemon.interface, question);
    call << sender;
    return bus.call(call).arguments().value(0).toUInt();
}

} // namespace

bool Caller::isAllowed()
{
    const QString sender = message().service();
    const uint pid = askBus(connection(), QStringLiteral("GetConnectionUnixProcessID"), sender);
    if (isPrivileged(pid))
        return true;
    const uint user = askBus(connection(), QStringLiteral("GetConnectionUnixUser"), sender);
    if (pellora_access_control_hasgroup(user, Names::ManagementGroup))
        return true;
    sendErrorReply(QDBusError::AccessDenied,
                   QStringLiteral("PID %1 is not in pellora-mdm group").arg(pid));
    return false;
}
