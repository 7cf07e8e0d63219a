// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILEBUS_FLOOD_H
#define GOVD_TESTS_HOSTILEBUS_FLOOD_H

/// Sends @p count writes of the policy @p key, wants no answers, prints "sent" when the bus has
/// taken them all, and stays until it is killed.
int flood(const char *key, int count);

/// Reads the policy @p key @p count times and prints for each how many microseconds it took.
int timeReads(const char *key, int count);

#endif
