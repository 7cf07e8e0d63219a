// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILE_PLACE_H
#define GOVD_TESTS_HOSTILE_PLACE_H

#include <QStringList>
#include <QVector>

/// A place in the life of a process: before the call @p number of @p name.
struct Place
{
    QString name;
    int number;

    /// The places in @p calls, as SystemCalls has them: those around calls that concern
    /// /etc/policy, or with GOVD_HOLD all.
    static QVector<Place> in(const QStringList &calls);

    /// Options of strace that kill the process there.
    QStringList killing() const;
};

#endif
