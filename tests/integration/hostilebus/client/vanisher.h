// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILEBUS_VANISHER_H
#define GOVD_TESTS_HOSTILEBUS_VANISHER_H

/// Writes @p number as the policy @p key, and kills its own process @p delay microseconds after the
/// call has been sent. Prints the answer if it comes before, and how many microseconds it took.
[[noreturn]] void writeAndVanish(const char *key, int number, long delay);

#endif
