# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Whatever piles up on the daemon's connection, it listens again afterwards."""

import pytest

from testbed import unit
from testbed.bus import Client, flood, read_of, silent, write_of
from testbed.processes import held, open_descriptors, processes_of, resident
from testbed.waiting import wait_until

MIB = 1 << 20
LIBRARY_BYTES = 63 * MIB  # that wait in the bus library until, by default, it reads no more
LIBRARY_DESCRIPTORS = 4096


@pytest.fixture
def more_descriptors(stopped, open_bus):
    """A system that lets more descriptors pass to the daemon than the bus library takes by itself."""
    with unit.drop_in("[Service]\nLimitNOFILE=65536\n"):
        yield


def listens_again():
    """Whether reads are answered, and a service that comes is told what waits for it."""
    wait_until(unit.answers, 20)
    with Client("root") as connman:
        connman.own("net.connman")
        return connman.next_call()


def test_calls_of_a_mebibyte(waiting, guest, runtime_manager):
    guest.flood(silent(read_of("x" * MIB)), 90)
    guest.settle()
    wait_until(lambda: resident(waiting) > LIBRARY_BYTES)
    runtime_manager.close()
    assert listens_again()


def test_descriptors(more_descriptors, waiting, runtime_manager):
    with Client("guest", descriptors=True) as stranger:
        def another_is_too_many():
            stranger.send_with(silent(read_of("CameraEnabled")), [0] * 16)
            return open_descriptors(waiting) > LIBRARY_DESCRIPTORS

        # What the bus cannot pass on at once it refuses, since it keeps few descriptors itself.
        wait_until(another_is_too_many)
    runtime_manager.close()
    assert listens_again()


def test_slow_log(daemon, root, guest):
    root.ask(write_of("InternetSharingEnabled", False))
    with held(processes_of("systemd-journald.service")):
        flood("guest", read_of("unknown"), 12_000)
        guest.flood(read_of("x" * MIB), 90)
        guest.settle()
        assert unit.answers(20)
    assert listens_again()
