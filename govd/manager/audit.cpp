// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policymanager.h"
#include "writerecord.h"

#include <QDBusPendingCallWatcher>

#include <syslog.h>

/// Records a change in the system log and with the system-log service; neither outcome is looked
/// at. A null @p oldValue stands for the value of the policy as a reader sees it now. Returns the
/// old value as text.
QString PolicyManager::createLogEvent(const QString &key, const QVariant &newValue,
                                      const QVariant &oldValue)
{
    const QString oldText = valueText(oldValue.isNull() ? policyValue(key) : oldValue);
    // One at a time on purpose: a "%2" in the key is filled in as well, and readers of the log know
    // the text so.
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
