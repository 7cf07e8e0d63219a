# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Configuration on a mount that comes late, fails, or is unmounted."""

import os
import pathlib
import shutil
import signal
import subprocess

import pytest

from testbed import files, unit
from testbed.bus import SERVICE, Client, read_of, write_of
from testbed.files import CAMERA_MARKER, DEVELOPER_SHELL_MARKER
from testbed.waiting import wait_until

SOURCE = pathlib.Path("/run/govd-test-source")  # what is to be mounted
GATE = pathlib.Path("/run/govd-test-gate")  # what a late mount waits for
POLICIES, PLUGINS = pathlib.Path("/etc/policy"), pathlib.Path("/etc/govd")
GATE_UNIT = f"[Service]\nType=oneshot\nExecStart=cat {GATE}\n"


@pytest.fixture
def units(stopped):
    """Adds units, each by its name and text; they are removed after the test."""
    added = []

    def add(name, text):
        added.append(unit.DROP_INS / name)
        files.write(added[-1], text)
        unit.run("systemctl", "daemon-reload")
    yield add
    unit.run("systemctl", "stop", unit.UNIT, "etc-*.mount")
    for file in added:
        file.unlink()
    unit.run("systemctl", "daemon-reload")


@pytest.fixture
def make_mount(units):
    """Adds a mount unit, like one from the file-system table or from the device maker; `setting` is
    a line of its unit."""
    def make(folder, setting=""):
        name = unit.run("systemd-escape", "--path", "--suffix=mount", folder)
        units(name, f"[Unit]\n{setting}\n"
                    f"[Mount]\nWhat={SOURCE}\nWhere={folder}\nType=none\nOptions=bind\n")
        folder.mkdir(exist_ok=True)
    yield make
    remove_source()


@pytest.fixture
def gate(units):
    """A unit that waits until this pipe is written to."""
    os.mkfifo(GATE)
    units("gate.service", GATE_UNIT)
    yield GATE
    GATE.unlink()


def remove_source():
    """Removes the source of the mount."""
    if SOURCE.is_dir():
        shutil.rmtree(SOURCE)
    SOURCE.unlink(missing_ok=True)


def store(key):
    """Makes a folder, in which a policy is stored as off, the source of the mount."""
    remove_source()
    files.store({key: False}, SOURCE / "policy.conf")


def store_nothing():
    """Makes the mount fail: its source is no folder; a missing one would be made."""
    remove_source()
    SOURCE.touch()


def state_of(name):
    """The state of a unit."""
    return unit.shown("ActiveState", name)


def ask(message):
    """The daemon's answer to root."""
    with Client() as client:
        return client.ask(message)


def expect_everything_off():
    """Checks that the daemon saves nothing and enforces its policies as off."""
    assert ask(write_of("CameraEnabled", True)) == (False,)
    assert not CAMERA_MARKER.exists()
    assert DEVELOPER_SHELL_MARKER.exists()


def expect_empty(folder):
    """Checks that the daemon has not treated the folder as that of a new device."""
    assert list(folder.iterdir()) == []


def kill_daemon():
    """Kills the daemon and waits until it is back, whether it has values to answer with or not."""
    pid = unit.main_pid()
    os.kill(pid, signal.SIGKILL)
    with Client() as client:
        wait_until(lambda: client.process_of(SERVICE) not in (0, pid))


def test_late_mount(make_mount, gate):
    make_mount(POLICIES, "Requires=gate.service\nAfter=gate.service")
    store("CameraEnabled")
    unit.run("systemctl", "start", "--no-block", unit.UNIT)
    wait_until(lambda: state_of("gate.service") == "activating")
    assert state_of(unit.UNIT) == "inactive"
    gate.write_text("")
    wait_until(unit.answers)
    assert ask(read_of("CameraEnabled")) == (("b", False),)
    assert ask(write_of("BrowserEnabled", False)) == (True,)
    assert files.stored(SOURCE / "policy.conf")["BrowserEnabled"] == "false"
    subprocess.run(["umount", POLICIES], check=True)
    expect_empty(POLICIES)


def test_failed_mount(make_mount):
    make_mount(POLICIES)
    store_nothing()
    unit.start()
    expect_everything_off()
    expect_empty(POLICIES)
    # The next process finds the mount in the same state.
    kill_daemon()
    expect_everything_off()
    expect_empty(POLICIES)
    # After a repair of the mount, a restart of the daemon is enough.
    store("BrowserEnabled")
    unit.run("systemctl", "restart", unit.UNIT)
    assert ask(read_of("BrowserEnabled")) == (("b", False),)
    assert ask(write_of("CameraEnabled", True)) == (True,)


def test_failed_mount_of_the_plugins(make_mount):
    make_mount(PLUGINS)
    store_nothing()
    unit.start()
    expect_everything_off()
    expect_empty(POLICIES)


def test_mount_that_went(make_mount):
    make_mount(POLICIES)
    store("CameraEnabled")
    unit.start()
    subprocess.run(["umount", POLICIES], check=True)
    store_nothing()
    assert ask(write_of("BrowserEnabled", False)) == (False,)
    expect_empty(POLICIES)
    kill_daemon()
    expect_everything_off()
    expect_empty(POLICIES)


def test_mount_without_a_unit(units):
    """A drop-in names a mount that has no unit of systemd."""
    units("govd-configuration.service.d/mount.conf",
          f"[Unit]\nAssertPathIsMountPoint={POLICIES}\n")
    unit.start()
    expect_everything_off()
    expect_empty(POLICIES)
    store("CameraEnabled")
    with files.mounted(POLICIES, "--bind", SOURCE):
        unit.run("systemctl", "restart", unit.UNIT)
        assert ask(read_of("CameraEnabled")) == (("b", False),)
        assert ask(write_of("BrowserEnabled", False)) == (True,)
