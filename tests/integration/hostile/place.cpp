// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostile/place.h"

#include <QHash>

QVector<Place> Place::in(const QStringList &calls)
{
    QVector<Place> places;
    QHash<QString, int> numbers;
    bool wasNear = false;
    for (const QString &call : calls) {
        const QString name = call.section(QLatin1Char('('), 0, 0);
        if (!call.contains(QLatin1Char('(')) || call.startsWith(QLatin1Char('<')))
            continue;
        const int number = ++numbers[name];
        const bool isNear = call.contains(QLatin1String("/etc/policy"));
        if (isNear || wasNear || qEnvironmentVariableIsSet("GOVD_HOLD"))
            places.append({name, number});
        wasNear = isNear;
    }
    return places;
}

QStringList Place::killing() const
{
    return {QStringLiteral("-e"),
            QStringLiteral("inject=%1:signal=KILL:when=%2").arg(name).arg(number)};
}
