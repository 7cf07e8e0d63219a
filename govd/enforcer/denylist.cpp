// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "call.h"
#include "handlers.h"
#include "serviceproxy.h"
#include "tables.h"

#include <QDebug>

namespace {

/// The same text with every Qt; only Qt 5 writes a list so by itself.
QString listText(const QStringList &names)
{
    return names.isEmpty() ? QStringLiteral("()")
                           : QStringLiteral("(\"%1\")").arg(names.join(QLatin1String("\", \"")));
}

} // namespace

/// For a policy without applications in the table (microphone, user report) the call is fixed too:
/// it sends an empty list.
void updateDenylist(PolicyEnforcementTask task)
{
    const QStringList applications = policyApplications.value(task.type);
    const QString method = task.value ? QStringLiteral("RemoveFromGlobalDenylist")
                                      : QStringLiteral("AddToGlobalDenylist");
    ServiceProxy sandbox(Names::ApplicationSandbox);
    callOrReport(sandbox, method, {applications}, [&](const QDBusError &) {
        qWarning().noquote() << "Failed to" << (task.value ? "remove" : "add") << "packages"
                             << (task.value ? "from" : "to")
                             << "global denylist:" << listText(applications);
    });
}
