// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef PELLORAACCESSCONTROL_ACCESSCONTROL_H
#define PELLORAACCESSCONTROL_ACCESSCONTROL_H

#include <stdbool.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Whether the user @p uid belongs to @p group (a NUL-terminated name, compared exactly).
///
/// Looked up in the system's user and group databases by each call. The user's primary group counts
/// like a supplementary one; the groups of running processes do not count. False for a user or a
/// group that the databases do not know, and when they cannot be read. May be called from any
/// thread; can block as long as the databases do.
__attribute__((visibility("default"))) bool pellora_access_control_hasgroup(uid_t uid,
                                                                            const char *group);

#ifdef __cplusplus
}
#endif

#endif
