# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""govd-sim: a simulated device on the system bus, and the verbs that show and control it."""
