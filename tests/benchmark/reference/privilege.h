// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_REFERENCE_PRIVILEGE_H
#define GOVD_BENCHMARK_REFERENCE_PRIVILEGE_H

/// Whether the process @p pid runs as the group "privileged" or the user root. The group's name
/// first and the user's only if it is needed, each looked up afresh.
bool isPrivileged(unsigned pid);

#endif
