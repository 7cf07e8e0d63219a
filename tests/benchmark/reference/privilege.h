// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_REFERENCE_PRIVILEGE_H
#define GOVD_BENCHMARK_REFERENCE_PRIVILEGE_H

/// Whether the process @p pid runs as the group "privileged" or the user root. The group's name is
/// looked up first and the user's only if needed, each time anew.
bool isPrivileged(unsigned pid);

#endif
