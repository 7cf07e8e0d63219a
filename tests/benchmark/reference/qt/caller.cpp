// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/qt/caller.h"

#include "common/names.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <grp.h>
#include <pelloraaccesscontrol/accesscontrol.h>
#include <pwd.h>
#include <sys/stat.h>

namespace {

/// What the bus says about a connection; 0 when it knows nothing.
uint askBus(const QDBusConnection &bus, const QString &question, const QString &sender)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        Names::BusDaemon.service, Names::BusDaemon.path, Names::BusDaemon.interface, question);
    call << sender;
    return bus.call(call).arguments().value(0).toUInt();
}

/// The group's name first and the user's only if it is needed, each looked up afresh.
bool isPrivileged(uint pid)
{
    char buffer[4096];
    struct stat process;
    if (stat(("/proc/" + std::to_string(pid)).c_str(), &process) != 0)
        return false;
    group groupEntry;
    group *foundGroup = nullptr;
    getgrgid_r(process.st_gid, &groupEntry, buffer, sizeof buffer, &foundGroup);
    if (foundGroup && Names::PrivilegedGroup == QLatin1String(foundGroup->gr_name))
        return true;
    passwd userEntry;
    passwd *foundUser = nullptr;
    getpwuid_r(process.st_uid, &userEntry, buffer, sizeof buffer, &foundUser);
    return foundUser && Names::RootUser == QLatin1String(foundUser->pw_name);
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
