// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "call.h"
#include "handlers.h"
#include "serviceproxy.h"

#include <QDBusVariant>
#include <QDebug>

void switchUsbDevices(PolicyEnforcementTask task)
{
    ServiceProxy usbManager(Names::UsbManagerProperties);
    callOrReport(usbManager, QStringLiteral("Set"),
                 {Names::UsbManager, QStringLiteral("Enabled"),
                  QVariant::fromValue(QDBusVariant(task.value))},
                 [](const QDBusError &) {
                     // The line is fixed; it says "disable" for both values.
                     qWarning() << "Failed to disable USB devices connection.";
                 });
}

/// Allowing developer mode does not enable remote access, which is the user's setting.
void disableRemoteAccess(PolicyEnforcementTask task)
{
    if (task.value)
        return;
    ServiceProxy developerMode(Names::DeveloperMode);
    callOrReport(developerMode, QStringLiteral("SetRemoteConnectionEnabled"), {false},
                 [](const QDBusError &) {
                     qWarning() << "Failed to disable remote access in developer mode.";
                 });
}

/// Checks the type although its row holds no other one: a policy that is added to that row must not
/// switch tethering off.
void disableTethering(PolicyEnforcementTask task)
{
    if (task.type != PolicyTypes::InternetSharing || task.value)
        return;
    ServiceProxy wifi(Names::WifiTechnology);
    callOrReport(wifi, QStringLiteral("SetProperty"),
                 {QStringLiteral("Tethering"), QVariant::fromValue(QDBusVariant(false))},
                 [](const QDBusError &error) {
                     qWarning() << "Failed to disable internet sharing:" << error;
                 });
}
