# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The device around the daemon: its users, its bus, its services, the service manager.

The modules for tests work only as root inside the sandbox (scripts/sandbox --help). The services
and the program that is made of them (sim/) work on any bus where their names are free.
"""
