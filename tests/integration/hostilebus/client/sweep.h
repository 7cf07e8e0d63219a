// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILEBUS_SWEEP_H
#define GOVD_TESTS_HOSTILEBUS_SWEEP_H

/// Calls every member that the object describes once, with arguments that make sense, and prints
/// "MEMBER<tab>OUTCOME" for each.
int callSensibly();

/// Calls every member with arguments of every kind and number, and prints
/// "MEMBER<tab>RIGHT TYPES<tab>SENT TYPES<tab>OUTCOME" for each call.
int callWildly();

#endif
