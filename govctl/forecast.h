// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_FORECAST_H
#define GOVCTL_FORECAST_H

#include "govctl/policystate.h"

/// What a write would do, told without making it.
struct Forecast
{
    /// A policy that would read otherwise.
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
    QVector<Enforcement> enforcements; ///< in their order, changed or not
    QStringList notes; ///< what may surprise

    QJsonObject toJson() const;
    QString toText() const;
};

/// @p snapshot has all policies.
Forecast forecastPolicy(const Snapshot &snapshot, const QString &key, bool value);
Forecast forecastSwitch(const Snapshot &snapshot, const QString &key, bool value);

/// Words for policies that share a USB mode with one that is enforced as @p value, and that read
/// otherwise: the mode follows what was enforced last.
QStringList sharedModeNotes(const Snapshot &snapshot, int type, bool value);

#endif
