// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "call.h"
#include "handlers.h"
#include "serviceproxy.h"

#include <QDebug>

void switchMicrophone(PolicyEnforcementTask task)
{
    const QString state = task.value ? QStringLiteral("enabled") : QStringLiteral("disabled");
    ServiceProxy audioPolicy(Names::AudioPolicy);
    callOrReport(audioPolicy, QStringLiteral("Set"), {QStringLiteral("microphone"), state},
                 [&](const QDBusError &error) {
                     qWarning() << "Failed to" << (task.value ? "enable" : "disable")
                                << "microphone" << error.name();
                 });
}
