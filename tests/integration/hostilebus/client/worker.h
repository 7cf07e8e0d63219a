// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILEBUS_WORKER_H
#define GOVD_TESTS_HOSTILEBUS_WORKER_H

#include <string>
#include <vector>

/// What one client does among many.
struct Work
{
    unsigned seed = 0;
    int firstNumber = 0; ///< of the numbers that this client alone writes
    int calls = 0;
    int odd = 0; ///< how many of a hundred calls are none that the daemon offers
    std::vector<std::string> keys;
};

/// Reads and writes policies at random, one call after the other, and prints a line for each:
/// "r KEY VALUE" or "w KEY VALUE OUTCOME". Odd calls are not told.
///
/// Every fifth key gets plain booleans. The others get numbers that nobody else writes: a whole
/// one, which allows, or a millionth of one, which forbids; it is printed as "~" and the number.
int work(const Work &work);

#endif
