# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The effect of signals while the daemon starts, waits and serves."""

import os
import pathlib
import signal

import pytest

from testbed import unit
from testbed.bus import Client, write_of
from testbed.waiting import wait_until


@pytest.fixture
def silent_device_information(stopped):
    """The device-information service, which every start calls; it sends no reply."""
    with Client("root") as client:
        client.own("org.kvt.deviceinfo")
        yield client


def blocked_signals(pid):
    """The masks of blocked signals of all threads of a process."""
    statuses = [file.read_text() for file in pathlib.Path(f"/proc/{pid}/task").glob("*/status")]
    return {line.split()[1] for status in statuses for line in status.splitlines()
            if line.startswith("SigBlk:")}


def test_start_that_waits_can_be_ended(silent_device_information):
    unit.run("systemctl", "start", "--no-block", unit.UNIT)
    silent_device_information.next_call()
    pid = unit.main_pid()
    os.kill(pid, signal.SIGTERM)
    wait_until(lambda: not pathlib.Path(f"/proc/{pid}").exists(), 5)


def test_no_signal_is_blocked(daemon):
    assert blocked_signals(daemon) == {"0" * 16}


def test_termination_during_a_call_ends_it_afterwards(daemon, root):
    with Client("root") as manager:
        manager.own("org.kvt.RuntimeManager")
        root.send(write_of("MessagesEnabled", False))
        manager.next_call()
        os.kill(daemon, signal.SIGTERM)
    unit.comes_back(daemon)
    assert "MessagesEnabled=false" in pathlib.Path("/etc/policy/policy.conf").read_text()
