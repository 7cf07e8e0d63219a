// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILEBUS_LISTENER_H
#define GOVD_TESTS_HOSTILEBUS_LISTENER_H

/// Is the system-log service, and hears the daemon's signals. Prints in the order of the bus
/// "ready", then "event TEXT" and "signal KEY BOOLEAN", until it is killed.
int listen();

#endif
