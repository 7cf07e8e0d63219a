// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "caller.h"

#include "daemonfailure.h"
#include "names.h"
#include "policystate.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <pelloraaccesscontrol/accesscontrol.h>

#include <unistd.h>

namespace {

Caller::Right rightOf(const QString &user, const QString &group)
{
    if (group == Names::PrivilegedGroup)
        return Caller::Right::Group;
    if (user == Names::RootUser)
        return Caller::Right::Root;
    if (pellora_access_control_hasgroup(geteuid(), Names::ManagementGroup))
        return Caller::Right::Member;
    return Caller::Right::None;
}

QString rightName(Caller::Right right)
{
    switch (right) {
    case Caller::Right::Group:
        return QStringLiteral("group");
    case Caller::Right::Root:
        return QStringLiteral("root");
    case Caller::Right::Member:
        return QStringLiteral("member");
    case Caller::Right::None:
        return QStringLiteral("none");
    }
    Q_UNREACHABLE();
}

} // namespace

QJsonObject Caller::toJson() const
{
    return {{QStringLiteral("user"), user},
            {QStringLiteral("group"), group},
            {QStringLiteral("allowed"), isAllowed()},
            {QStringLiteral("right"), rightName(right)},
            {QStringLiteral("bus"), valueToJson(bus)}};
}

Caller describeCaller()
{
    // The daemon looks at the same entry.
    const QFileInfo process(QStringLiteral("/proc/%1").arg(QCoreApplication::applicationPid()));
    Caller caller{process.owner(), process.group(), {}, {}};
    caller.right = rightOf(caller.user, caller.group);
    if (caller.user.isEmpty())
        caller.user = QString::number(geteuid());
    if (caller.group.isEmpty())
        caller.group = QString::number(getegid());
    return caller;
}

Caller describeCaller(Daemon &daemon)
{
    Caller caller = describeCaller();
    if (const Result<bool> passes = daemon.busPassesWrites())
        caller.bus = *passes;
    return caller;
}

Outcome checkRight(Daemon &daemon)
{
    const Caller caller = describeCaller(daemon);
    if (caller.isAllowed())
        return std::nullopt;
    return caller.bus.value_or(true) ? DaemonFailure::notAllowed() : DaemonFailure::busRefuses();
}
