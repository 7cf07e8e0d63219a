// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_ENFORCER_TABLES_H
#define GOVD_ENFORCER_TABLES_H

#include "policyenforcementtask.h"

#include <QHash>
#include <QPair>
#include <QStringList>
#include <QVector>

/// Direct route: the handler that runs at once for a policy.
extern const QHash<PolicyType, PolicyHandler> policyHandlers;

/// Service route: for a service on the system bus, the policies that it enforces and the handler
/// that calls it. Tasks wait until the service has been seen on the bus.
extern const QHash<QString, QPair<QVector<PolicyType>, PolicyHandler>> serviceHandlers;

/// The applications that a policy allows or forbids to start.
extern const QHash<PolicyType, QStringList> policyApplications;

/// The USB mode that a policy allows or forbids.
extern const QHash<PolicyType, const char *> usbModeNames;

#endif
