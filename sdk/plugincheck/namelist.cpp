// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "namelist.h"

#include <QSet>

QStringList repeated(const QStringList &names)
{
    QSet<QString> seen;
    QSet<QString> twice;
    for (const QString &name : names) {
        if (seen.contains(name))
            twice.insert(name);
        seen.insert(name);
    }
    return twice.values();
}

QString enumerated(QStringList names)
{
    names.sort();
    return names.isEmpty() ? QStringLiteral("nothing") : names.join(QStringLiteral(", "));
}
