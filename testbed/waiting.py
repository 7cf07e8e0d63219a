# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Waiting for conditions, never for a guess of time."""

import time

PATIENCE = 60.0  # seconds; nothing takes nearly as long on a machine in order


def wait_until(condition, deadline=PATIENCE):
    """Polls `condition` until what it returns is true, and returns that.

    Raises TimeoutError after `deadline` seconds.
    """
    end = time.monotonic() + deadline
    while not (result := condition()):
        if time.monotonic() > end:
            raise TimeoutError(f"{deadline} s have passed")
        time.sleep(0.02)
    return result


def holds_for(seconds, condition):
    """Whether `condition` is true at each look during so many seconds."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if not condition():
            return False
        time.sleep(0.02)
    return True
