// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSCALL_H
#define SYSTEMSETTINGS_UDISKSCALL_H

#include <QDBusMessage>
#include <QLoggingCategory>

/// What the library logs. Debug lines are off by default.
Q_DECLARE_LOGGING_CATEGORY(lcSystemSettings)

namespace UDisks {

/// A call to the storage service, which does not start it.
QDBusMessage methodCall(const QString &path, const QString &interface, const QString &method,
                        const QVariantList &arguments = {});

} // namespace UDisks

#endif
