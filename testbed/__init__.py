# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The device around the daemon: its users, its bus, its services, the service manager.

What is for tests works as root inside the sandbox only (scripts/sandbox --help); the services and
the program that is made of them (sim/) work on any bus of their own.
"""
