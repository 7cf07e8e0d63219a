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
                         // No warning, because an application that is not running is an error too.
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
