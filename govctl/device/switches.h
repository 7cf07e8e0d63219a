// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_SWITCHES_H
#define GOVCTL_SWITCHES_H

#include "daemon.h"

#include <QJsonObject>

/// The keys of the policies that @p governor governs.
QStringList governedPolicies(const Daemon::Switch &governor);

QJsonObject toJson(const Daemon::Switch &governor);

/// Fails when @p key is none of the switches @p known.
Outcome checkSwitch(const QString &key, const QStringList &known);

/// Fails when one of @p patterns matches no policy and no switch. Without a daemon the switches are
/// not known, so every pattern is accepted.
Outcome checkNames(const QStringList &patterns, std::chrono::milliseconds timeout);

#endif
