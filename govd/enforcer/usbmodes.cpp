// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "call.h"
#include "enforcermanager.h"
#include "handlers.h"
#include "serviceproxy.h"
#include "tables.h"

#include <QDebug>

#include <optional>

namespace {

/// Whether the service has accepted the full whitelist. After that only changes of single modes are
/// sent, also when the service restarts.
bool usbWhitelistSent = false;

/// The modes that policies allow now, joined; a mode that two policies allow is there twice.
/// Nothing when there is no manager to ask.
std::optional<QString> allowedModes()
{
    QStringList modes;
    for (auto row = usbModeNames.begin(); row != usbModeNames.end(); ++row) {
        if (!enforcerManager) {
            qWarning() << "PolicyManager wasn't set";
            return std::nullopt;
        }
        if (enforcerManager->policyValue(typeToKey(row.key())).toBool())
            modes.append(QLatin1String(row.value()));
    }
    return modes.join(QLatin1Char(','));
}

void sendWhitelist(ServiceProxy &usbModes, const QString &modes)
{
    usbWhitelistSent = callOrReport(
        usbModes, QStringLiteral("set_whitelisted_modes"), {modes}, [](const QDBusError &error) {
            qWarning() << "Failed to update USB mode whitelist" << error.name();
        });
}

void sendMode(ServiceProxy &usbModes, const QString &mode, bool allowed)
{
    callOrReport(usbModes, QStringLiteral("set_whitelisted"), {mode, allowed},
                 [&](const QDBusError &error) {
                     qWarning() << "Failed to" << (allowed ? "enable" : "disable") << "USB mode"
                                << mode << error.name();
                 });
}

} // namespace

/// Two policies share the mode "developer_mode": the one that is enforced last decides.
void updateUsbModes(PolicyEnforcementTask task)
{
    ServiceProxy usbModes(Names::UsbModes);
    if (!usbWhitelistSent) {
        const std::optional<QString> modes = allowedModes();
        if (!modes)
            return;
        sendWhitelist(usbModes, *modes);
    }
    if (const char *mode = usbModeNames.value(task.type))
        sendMode(usbModes, QLatin1String(mode), task.value);
}
