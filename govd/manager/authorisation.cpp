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

/// Whether the caller of the present bus call may change anything: one whose process runs as the
/// group "privileged" or the user root, or whose user belongs to the management group. A caller
/// that may not has got its error reply when this returns. The daemon's own work is allowed.
/// @p record is told who the caller is.
///
/// Every check asks afresh, also when one call runs several of them: a caller can be gone, or be
/// another program, from one to the next.
bool PolicyManager::isCallAllowed(WriteRecord *record)
{
    if (!calledFromDBus())
        return true;

    QDBusConnectionInterface *bus = connection().interface();
    if (!bus)
        return false; // the bus is lost, and with it every caller
    const QString sender = message().service();

    // A query that fails gives 0. No process has that id, and root, whose user id it is, belongs
    // to the management group only by mistake: a caller that is gone is refused.
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
