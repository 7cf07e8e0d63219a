// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policymanager.h"
#include "writerecord.h"

#include <QDBusPendingCallWatcher>

#include <syslog.h>

/// Sends the audit line to syslog and to the system-log service, and ignores both results. A null
/// @p oldValue stands for the policy's effective value. Returns the old value as text.
QString PolicyManager::createLogEvent(const QString &key, const QVariant &newValue,
                                      const QVariant &oldValue)
{
    QString oldText = valueText(oldValue.isNull() ? policyValue(key) : oldValue);
    // Chained arg() also replaces a "%2" in the key, unlike one call with three texts: the audit
    // line is fixed to the letter.
    const QString text = QStringLiteral("Policy %1 changed. Old value %2. New value %3.")
                             .arg(key)
                             .arg(oldText) // clazy:exclude=qstring-arg
                             .arg(valueText(newValue));

    syslog(LOG_INFO, "%s", text.toUtf8().constData());

    const QDBusPendingCall call = systemLogs.asyncCall(QStringLiteral("sendEventStringAlt"),
                                                       QStringLiteral("security-policy-changed"),
                                                       QStringLiteral("INFO_LEVEL"), text);
    auto *watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [](QDBusPendingCallWatcher *finished) { finished->deleteLater(); });
    return oldText;
}
