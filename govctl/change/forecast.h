// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_FORECAST_H
#define GOVCTL_FORECAST_H

#include "plan.h"

/// What a write would do, worked out without making it.
struct Forecast
{
    /// A policy whose effective value would change.
    struct Reading
    {
        QString key;
        std::optional<bool> before;
        bool value = false;
    };

    /// A policy that would be enforced.
    struct Enforcement
    {
        QString key;
        int type = 0;
        bool value = false;
    };

    QVector<Reading> readings;
    QVector<Enforcement> enforcements; ///< in the daemon's order, of changed and unchanged values
    QStringList notes; ///< side effects on other policies, for people

    /// Adds a note for each service that the daemon would call and that is not on the bus.
    void addAbsences(Daemon &daemon);

    QJsonObject toJson() const;
    QString toText() const;
};

/// @p snapshot has all policies.
Forecast forecastPolicy(const Snapshot &snapshot, const QString &key, bool value);
Forecast forecastSwitch(const Snapshot &snapshot, const QString &key, bool value);

/// A note for each policy that shares a USB mode with one that is enforced as @p value, and whose
/// effective value differs: the policy that is enforced last decides about the mode.
QStringList sharedModeNotes(const Snapshot &snapshot, int type, bool value);

/// The same for the writes @p steps, made in this order. @p snapshot is the state before.
QStringList sharedModeNotes(Snapshot snapshot, const QVector<Step> &steps);

#endif
