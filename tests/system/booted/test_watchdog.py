# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A daemon that no longer reads messages is restarted; one that waits for services is not."""

import contextlib
import os
import pathlib
import signal
import socket
import time

import pytest
from jeepney import new_method_return

from testbed import unit
from testbed.bus import Client, introspection, write_of
from testbed.files import CAMERA_MARKER
from testbed.processes import Frozen, held, processes_of, thread_of
from testbed.waiting import holds_for, wait_until

TIME_ALLOWED = 3  # seconds of the watchdog
SYSTEM_LOG = pathlib.Path("/run/systemd/journal/dev-log")
LOG_QUEUE = 100  # more messages than the kernel queues for a log that does not read


@pytest.fixture
def impatient(daemon):
    """A shorter watchdog time than in the shipped unit; the daemon is not yet started."""
    assert unit.shown("WatchdogUSec") == "1min"
    unit.reset()
    with unit.drop_in(f"[Service]\nWatchdogSec={TIME_ALLOWED}\n"):
        yield


@pytest.fixture
def hanging_log():
    """A system log that reads nothing from its queue."""
    aside = SYSTEM_LOG.rename(SYSTEM_LOG.with_suffix(".aside"))
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as log:
        log.bind(str(SYSTEM_LOG))
        yield
    aside.rename(SYSTEM_LOG)


@pytest.fixture
def watched(impatient, root):
    """The process id of a daemon that has the camera off, but whose marker is there."""
    unit.start()
    root.ask(write_of("CameraEnabled", False))
    CAMERA_MARKER.touch()
    return unit.main_pid()


def test_sound_daemon(watched):
    assert holds_for(2 * TIME_ALLOWED, lambda: unit.main_pid() == watched)


def test_stuck_daemon(watched):
    os.kill(watched, signal.SIGSTOP)
    unit.comes_back(watched)
    assert not CAMERA_MARKER.exists()


def test_deaf_daemon(watched):
    with Frozen(thread_of(watched, "QDBusConnection")):
        unit.comes_back(watched)
    assert not CAMERA_MARKER.exists()


@pytest.mark.bus
def test_silent_bus(watched):
    with held(processes_of("dbus.service")):
        wait_until(lambda: unit.main_pid() != watched)
    unit.comes_back(watched)
    assert not CAMERA_MARKER.exists()


def test_log_that_hangs(hanging_log, watched, root):
    with contextlib.suppress(TimeoutError):
        for _ in range(LOG_QUEUE):
            root.ask(write_of("CameraEnabled", False), 1)
    assert not unit.answers(1)
    unit.comes_back(watched)
    assert not CAMERA_MARKER.exists()


def test_slow_service(watched):
    with Client("root") as sandbox:
        sandbox.own("org.pelloraos.appjaild1")
        for _ in range(4):
            call = sandbox.next_call()
            time.sleep(TIME_ALLOWED * 2 / 3)
            sandbox.send(new_method_return(call))
    assert unit.answers()
    assert (unit.main_pid(), unit.restarts()) == (watched, 0)


def test_never_idle(watched):
    end = time.monotonic() + 3 * TIME_ALLOWED
    with Client("guest") as stranger:
        stranger.flood(introspection(), 60)
        while time.monotonic() < end:
            stranger.flood(introspection(), 60)
            for _ in range(60):
                stranger.receive(timeout=TIME_ALLOWED)
    assert (unit.main_pid(), unit.restarts()) == (watched, 0)


def test_long_start(impatient):
    with Client("root") as information:
        information.own("org.kvt.deviceinfo")
        unit.run("systemctl", "start", "--no-block", unit.UNIT)
        information.next_call()
        time.sleep(TIME_ALLOWED * 4 / 3)
    wait_until(unit.answers)
    assert unit.restarts() == 0
