# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Waiting for conditions."""

import time

PATIENCE = 60.0  # seconds; only a failure takes as long


def wait_until(condition, deadline=PATIENCE):
    """Polls `condition` until its result is true, and returns the result.

    Raises TimeoutError after `deadline` seconds.
    """
    end = time.monotonic() + deadline
    while not (result := condition()):
        if time.monotonic() > end:
            raise TimeoutError(f"{deadline} s have passed")
        time.sleep(0.02)
    return result


def holds_for(seconds, condition):
    """Whether `condition` is true at each poll during so many seconds."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if not condition():
            return False
        time.sleep(0.02)
    return True
