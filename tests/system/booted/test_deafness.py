# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Whatever piles up on the daemon's connection, it listens again afterwards."""

from testbed import service
from testbed.bus import Client, read_of, silent
from testbed.processes import resident
from testbed.waiting import wait_until

MIB = 1 << 20


def listens_again():
    """Whether reads are answered, and a service that comes is told what waits for it."""
    wait_until(service.answers, 20)
    with Client("root") as connman:
        connman.own("net.connman")
        return connman.next_call()


def test_calls_of_a_mebibyte(waiting, guest, runtime_manager):
    guest.flood(silent(read_of("x" * MIB)), 90)
    guest.settle()
    wait_until(lambda: resident(waiting) > 64 * MIB)
    runtime_manager.close()
    assert listens_again()
