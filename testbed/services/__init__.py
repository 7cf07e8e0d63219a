# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The simulated services that the daemon calls, each with a state and with faults on request."""
