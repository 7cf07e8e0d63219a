// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "busloss.h"

#include <QDBusConnection>

BusLoss::BusLoss()
{
    // libdbus itself queues this signal when the connection ends.
    QDBusConnection::systemBus().connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                                         QStringLiteral("org.freedesktop.DBus.Local"),
                                         QStringLiteral("Disconnected"), this, SIGNAL(lost()));
}
