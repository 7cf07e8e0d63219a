// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "call.h"
#include "handlers.h"
#include "serviceproxy.h"

#include <QDebug>

namespace {

void terminate(const QStringList &applications)
{
    ServiceProxy runtimeManager(Names::RuntimeManager);
    for (const QString &application : applications) {
        callOrReport(runtimeManager, QStringLiteral("Terminate"), {application},
                     [&](const QDBusError &error) {
                         // A notice, no warning: most often the application was not running.
                         qInfo() << "Terminating" << application << error.message();
                     });
    }
}

} // namespace

void terminateBrowsers(PolicyEnforcementTask task)
{
    if (!task.value)
        terminate({Names::BrowserApplication, Names::WebApplication});
}

void terminateMessages(PolicyEnforcementTask task)
{
    if (!task.value)
        terminate({Names::MessagesApplication});
}
