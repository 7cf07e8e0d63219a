// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_POLICYLIST_H
#define GOVD_PLUGINCHECK_POLICYLIST_H

#include <QSet>
#include <QString>
#include <QStringList>

/// The entries of @p list that stand in it more than once.
template <typename T> QSet<T> repeated(const QList<T> &list)
{
    QSet<T> seen;
    QSet<T> twice;
    for (const T &entry : list) {
        if (seen.contains(entry))
            twice.insert(entry);
        seen.insert(entry);
    }
    return twice;
}

/// The names in order, for people.
inline QString enumerated(QStringList names)
{
    names.sort();
    return names.isEmpty() ? QStringLiteral("nothing") : names.join(QStringLiteral(", "));
}

#endif
