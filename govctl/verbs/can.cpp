// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "caller.h"
#include "names.h"
#include "request.h"
#include "text.h"

namespace {

QString toText(const Caller &caller)
{
    if (caller.right != Caller::Right::None && !caller.isAllowed())
        return QStringLiteral(
            "no: the daemon would let it, but the system bus does not; it goes by "
            "the groups that this session had from its start\n");
    const QString managers = QString::fromLatin1(Names::ManagementGroup);
    switch (caller.right) {
    case Caller::Right::Group:
        return QStringLiteral("yes: this process runs in the group %1\n").arg(caller.group);
    case Caller::Right::Root:
        return QStringLiteral("yes: this process runs as %1\n").arg(caller.user);
    case Caller::Right::Member:
        return QStringLiteral("yes: user %1 belongs to the group %2\n").arg(caller.user, managers);
    case Caller::Right::None:
        return QStringLiteral(
                   "no: user %1 is not root and does not belong to the group %2, and this "
                   "process runs in the group %3, not in %4\n")
            .arg(caller.user, managers, caller.group, Names::PrivilegedGroup);
    }
    Q_UNREACHABLE();
}

} // namespace

ExitCode Verbs::can(const Request &request, Output &output)
{
    Daemon daemon(request.timeout);
    const Caller caller = daemon.open() ? describeCaller(daemon) : describeCaller();
    return output.write(caller.isAllowed() ? ExitCode::Done : ExitCode::No, caller.toJson(),
                        toText(caller));
}
