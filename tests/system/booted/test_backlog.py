# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""After a backlog on its bus connection, the daemon reads messages again."""

import pytest

from testbed import unit
from testbed.bus import Client, flood, read_of, silent, write_of
from testbed.processes import held, open_descriptors, processes_of, resident
from testbed.waiting import wait_until

pytestmark = pytest.mark.bus

MIB = 1 << 20
LIBRARY_BYTES = 63 * MIB  # unhandled bytes at which the bus library stops reading by default
LIBRARY_DESCRIPTORS = 4096


@pytest.fixture
def more_descriptors(stopped, open_bus):
    """A limit of descriptors for the daemon that is above the bus library's default."""
    with unit.drop_in("[Service]\nLimitNOFILE=65536\n"):
        yield


def serves_again():
    """Whether reads are answered, and a service that appears gets its tasks."""
    wait_until(unit.answers, 20)
    with Client("root") as connman:
        connman.own("net.connman")
        return connman.next_call()


def test_calls_of_a_mebibyte(waiting, guest, runtime_manager):
    guest.flood(silent(read_of("x" * MIB)), 70)
    guest.settle()
    wait_until(lambda: resident(waiting) > LIBRARY_BYTES)
    runtime_manager.close()
    assert serves_again()


def test_descriptors(more_descriptors, waiting, runtime_manager):
    with Client("guest", descriptors=True) as stranger:
        def another_is_too_many():
            stranger.send_with(silent(read_of("CameraEnabled")), [0] * 16)
            return open_descriptors(waiting) > LIBRARY_DESCRIPTORS

        # The bus queues few descriptors and refuses what it cannot pass on at once.
        wait_until(another_is_too_many)
    runtime_manager.close()
    assert serves_again()


def test_slow_log(daemon, root, guest):
    root.ask(write_of("InternetSharingEnabled", False))
    with held(processes_of("systemd-journald.service")):
        flood("guest", read_of("unknown"), 12_000)
        guest.flood(read_of("x" * MIB), 70)
        guest.settle()
        assert unit.answers(20)
    assert serves_again()
