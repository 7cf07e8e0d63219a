// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef PELLORAACCESSCONTROL_ACCESSCONTROL_H
#define PELLORAACCESSCONTROL_ACCESSCONTROL_H

#include <stdbool.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Tells whether the user @p uid belongs to @p group (a NUL-terminated name, compared exactly).
///
/// The answer is that of the system's user and group databases at the moment of the call: the
/// user's primary group counts like a supplementary one, the groups of a running process do not.
/// False for a user or a group that the databases do not know, and when they cannot be read.
/// May be called from any thread.
__attribute__((visibility("default"))) bool pellora_access_control_hasgroup(uid_t uid,
                                                                            const char *group);

#ifdef __cplusplus
}
#endif

#endif
