# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The device around the daemon, for tests: its users, its bus, the service manager.

Works as root inside the sandbox only (scripts/sandbox --help).
"""
