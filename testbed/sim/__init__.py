# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""govd-sim: a whole device on the system bus, and the verbs by which people see and handle it."""
