// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_REFERENCE_MARKERS_H
#define GOVD_BENCHMARK_REFERENCE_MARKERS_H

#include <string>

/// Creates or removes the marker file of the policy @p key in @p directory, as the daemon's
/// handlers do; nothing for a policy without one. Servers that run at the same time use separate
/// directories.
void markPolicy(const std::string &directory, const std::string &key, bool value);

#endif
