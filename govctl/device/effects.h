// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_EFFECTS_H
#define GOVCTL_EFFECTS_H

#include <QStringList>
#include <QVector>

/// What the daemon does on the device when it enforces the policy @p type as @p value, one line for
/// each action. Empty when the policy has no handler.
QStringList enforcementEffects(int type, bool value);

/// The other policies that govern the same USB mode as the policy @p type.
QVector<int> sharingUsbMode(int type);

#endif
