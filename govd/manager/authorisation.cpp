// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "names.h"
#include "policymanager.h"
#include "writerecord.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QFileInfo>

#include <pelloraaccesscontrol/accesscontrol.h>

/// Whether the caller of the present bus call may write: its process runs as the group "privileged"
/// or the user root, or its user belongs to the management group. Always true outside a bus call.
/// A caller without rights has been sent its error reply when this returns. @p record, if any, is
/// given the caller.
///
/// Nothing is cached, even within one bus call: between two checks the caller's process can end or
/// execute another program.
bool PolicyManager::isCallAllowed(WriteRecord *record)
{
    if (!calledFromDBus())
        return true;

    QDBusConnectionInterface *bus = connection().interface();
    if (!bus)
        return false; // the bus is lost, and with it every caller
    const QString sender = message().service();

    // For a caller that has gone, both queries fail and give 0. There is no /proc/0, and user 0 is
    // root, by default no member of the management group: the caller is refused.
    const int pid = static_cast<int>(bus->servicePid(sender).value());
    const QFileInfo process(QStringLiteral("/proc/%1").arg(pid));
    if (process.group() == Names::PrivilegedGroup || process.owner() == Names::RootUser) {
        if (record)
            record->setCaller(sender, pid, process.ownerId());
        return true;
    }

    const QDBusReply<uint> uid = bus->serviceUid(sender);
    if (record)
        record->setCaller(sender, pid, uid.isValid() ? std::optional(uid.value()) : std::nullopt);
    if (pellora_access_control_hasgroup(uid.value(), Names::ManagementGroup))
        return true;

    sendErrorReply(QDBusError::AccessDenied,
                   QStringLiteral("PID %1 is not in pellora-mdm group").arg(pid));
    return false;
}
