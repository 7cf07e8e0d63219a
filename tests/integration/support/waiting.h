// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_WAITING_H
#define GOVD_TESTS_SUPPORT_WAITING_H

#include <functional>

namespace Support {

/// How long a test waits, in milliseconds, before it gives up. Nothing takes nearly as long on a
/// machine in order; it is generous for the sake of busy ones and of sanitizers.
constexpr int Deadline = 60000;

/// Runs the event loop until @p condition holds. False when it does not within @p milliseconds.
[[nodiscard]] bool waitFor(const std::function<bool()> &condition, int milliseconds = Deadline);

} // namespace Support

#endif
