# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What ends the daemon is told in its log, and it comes back."""

import contextlib
import os
import signal
import time

import pytest

from testbed import unit
from testbed.bus import Client, read_of, with_field
from testbed.processes import processes_of
from testbed.waiting import wait_until

CONTAINER = 10  # a header field that only some libraries know, and whose type is that of a path
MALFORMED = with_field(read_of("CameraEnabled").serialise(serial=7), CONTAINER, "u", 1)


def test_loss_of_the_bus(daemon, journal):
    for process in processes_of("dbus.service"):
        os.kill(process, signal.SIGKILL)
    unit.comes_back(daemon)
    warnings = [line for line in journal.lines() if line.pid == daemon and line.priority <= 4]
    assert [line.text for line in warnings[-1:]] == ["Lost the connection to the system bus"]


def fire():
    """Sends one message that the daemon's bus library takes for a reason to hang up."""
    with contextlib.suppress(ConnectionError), Client("guest") as stranger:
        stranger.sock.sendall(MALFORMED)
        stranger.settle()


def test_malformed_message(daemon):
    fire()
    wait_until(unit.answers, 10)


def test_malformed_messages_without_end(stopped):
    unit.run("systemctl", "start", "--no-block", unit.UNIT)
    end = time.monotonic() + 5
    while time.monotonic() < end:
        fire()
    wait_until(unit.answers, 10)
