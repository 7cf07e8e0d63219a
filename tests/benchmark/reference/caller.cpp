// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/caller.h"

#include "names.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <cstring>
#include <grp.h>
#include <pelloraaccesscontrol/accesscontrol.h>
#include <pwd.h>
#include <string>
#include <sys/stat.h>

namespace {

/// Whether the process @p pid runs as the group "privileged" or the user root. The group's name is
/// looked up first and the user's only if needed, each time anew.
bool isPrivileged(uint pid)
{
    char buffer[4096];
    struct stat process;
    if (stat(("/proc/" + std::to_string(pid)).c_str(), &process) != 0)
        return false;
    group groupEntry;
    group *foundGroup = nullptr;
    getgrgid_r(process.st_gid, &groupEntry, buffer, sizeof buffer, &foundGroup);
    if (foundGroup && std::strcmp(foundGroup->gr_name, "privileged") == 0)
        return true;
    passwd userEntry;
    passwd *foundUser = nullptr;
    getpwuid_r(process.st_uid, &userEntry, buffer, sizeof buffer, &foundUser);
    return foundUser && std::strcmp(foundUser->pw_name, "root") == 0;
}

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
