// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/text.h"
#include "govctl/caller.h"
#include "govctl/verb.h"
#include "names.h"

namespace {

QString toText(const Caller &caller)
{
    const QString managers = QString::fromLatin1(Names::ManagementGroup);
    switch (caller.right) {
    case Caller::Right::Group:
        return Text::tr("yes: this process runs in the group %1\n").arg(caller.group);
    case Caller::Right::Root:
        return Text::tr("yes: this process runs as %1\n").arg(caller.user);
    case Caller::Right::Member:
        return Text::tr("yes: user %1 belongs to the group %2\n").arg(caller.user, managers);
    case Caller::Right::None:
        return Text::tr("no: user %1 is not root and does not belong to the group %2, and this "
                        "process runs in the group %3, not in %4\n")
            .arg(caller.user, managers, caller.group, Names::PrivilegedGroup);
    }
    Q_UNREACHABLE();
}

} // namespace

ExitCode Verbs::can(const Request &, Output &output)
{
    const Caller caller = describeCaller();
    return output.write(caller.isAllowed() ? ExitCode::Done : ExitCode::No, caller.toJson(),
                        toText(caller));
}
