// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udiskscall.h"

#include "udisksnames.h"

Q_LOGGING_CATEGORY(lcSystemSettings, "systemsettings", QtInfoMsg)

namespace UDisks {

QDBusMessage methodCall(const QString &path, const QString &interface, const QString &method,
                        const QVariantList &arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(Service, path, interface, method);
    call.setAutoStartService(false);
    call.setArguments(arguments);
    return call;
}

} // namespace UDisks
