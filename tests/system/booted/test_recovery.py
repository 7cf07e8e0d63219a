# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon is restarted after every kind of end."""

import contextlib
import os
import signal
import time

import pytest

from testbed import files, unit
from testbed.bus import Client, read_of, with_field, write_of
from testbed.processes import processes_of
from testbed.waiting import wait_until

pytestmark = pytest.mark.bus

CONTAINER = 10  # a header field that only some libraries know, and whose type is that of a path
OFTEN = 7  # more starts in a short time than systemd's default limit allows
MALFORMED = with_field(read_of("CameraEnabled").serialise(serial=7), CONTAINER, "u", 1)


@pytest.fixture
def enabled(daemon):
    """A daemon that is started at boot and with the bus; its process id."""
    unit.run("systemctl", "enable", "--quiet", unit.UNIT)
    yield daemon
    unit.run("systemctl", "disable", "--quiet", unit.UNIT)


@contextlib.contextmanager
def broken_bus():
    """A socket that accepts connections for a bus that cannot be started."""
    with unit.drop_in("[Service]\nExecStart=\nExecStart=/bin/false\n", "dbus.service"):
        unit.run("systemctl", "stop", "dbus.service", "dbus.socket")
        yield
    unit.run("systemctl", "reset-failed", "dbus.service", "dbus.socket")
    unit.run("systemctl", "start", "dbus.socket")


def is_active():
    """Whether systemd shows the daemon as active."""
    return unit.shown("ActiveState") == "active"


def test_killed_again_and_again(daemon, root):
    assert root.ask(write_of("CameraEnabled", False)) == (True,)
    for _ in range(OFTEN):
        os.kill(daemon, signal.SIGKILL)
        unit.comes_back(daemon)
        daemon = unit.main_pid()
    assert root.ask(read_of("CameraEnabled")) == (("b", False),)
    assert unit.restarts() == OFTEN


def test_ended_in_good_order(daemon):
    os.kill(daemon, signal.SIGTERM)
    unit.comes_back(daemon)
    unit.run("systemctl", "stop", unit.UNIT)
    assert (unit.shown("Result"), unit.shown("ExecMainStatus")) == ("success", "0")


def test_terminated_during_a_call(daemon, root, runtime_manager):
    """It saves first."""
    root.send(write_of("MessagesEnabled", False))
    runtime_manager.next_call()
    os.kill(daemon, signal.SIGTERM)
    runtime_manager.close()
    unit.comes_back(daemon)
    assert files.stored()["MessagesEnabled"] == "false"


def test_loss_of_the_bus(daemon, journal):
    with Client() as before:
        assert before.ask(write_of("CameraEnabled", False)) == (True,)
    for process in processes_of("dbus.service"):
        os.kill(process, signal.SIGKILL)
    unit.comes_back(daemon)
    warnings = [line for line in journal.lines() if line.pid == daemon and line.priority <= 4]
    assert [line.text for line in warnings[-1:]] == ["Lost the connection to the system bus"]
    with Client() as after:
        assert after.ask(read_of("CameraEnabled")) == (("b", False),)
        assert after.ask(write_of("CameraEnabled", True)) == (True,)
    wait_until(is_active)


def test_bus_restarted(daemon):
    unit.run("systemctl", "restart", "dbus.service")
    unit.comes_back(daemon)
    wait_until(is_active)


def test_bus_stopped_and_started(enabled):
    unit.run("systemctl", "stop", "dbus.socket", "dbus.service")
    wait_until(lambda: not is_active())
    unit.run("systemctl", "start", "dbus.socket")
    wait_until(unit.answers)


def test_started_without_a_bus(enabled):
    """With the bus socket, systemd gives up the daemon until there is a bus; a newer one goes on
    starting it."""
    with broken_bus():
        unit.run("systemctl", "start", "--no-block", unit.UNIT)
        wait_until(lambda: unit.restarts() >= OFTEN
                   or unit.restarts() and unit.shown("ActiveState") == "inactive")
    wait_until(unit.answers)
    wait_until(is_active)


def fire():
    """Sends one message for which the daemon's bus library closes its connection."""
    with contextlib.suppress(ConnectionError), Client("guest") as stranger:
        stranger.sock.sendall(MALFORMED)
        stranger.settle()


def test_malformed_message(daemon):
    fire()
    wait_until(unit.answers, 10)


def test_malformed_messages_without_end(stopped):
    unit.run("systemctl", "start", "--no-block", unit.UNIT)
    end = time.monotonic() + 3
    while time.monotonic() < end:
        fire()
    wait_until(unit.answers, 10)
