# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A real file system, mounted and unmounted, with the real UDisks2 and the device manager that it
depends on. A loop device is on no drive, so it counts as a memory card."""

import contextlib
import os
import pathlib
import shutil
import signal

import pytest
from jeepney import HeaderFields, new_method_call

from testbed import unit, udisks
from testbed.bus import BUS, write_of
from testbed.devices import LoopDevice, disk_image
from testbed.services.storage import BLOCK
from testbed.waiting import PATIENCE, wait_until

SERVICE = "udisks2.service"
CHANGES = "type='signal',sender='org.freedesktop.UDisks2'"
MEMORY_CARDS_OFF = write_of("MemoryCardEnabled", False)
DEVICE_MANAGER = ("systemd-udevd.service", "systemd-udevd-control.socket",
                  "systemd-udevd-kernel.socket")


@pytest.fixture(scope="module", autouse=True)
def device_manager():
    """A device manager that announces the disks of the tests, and a new UDisks2."""
    udisks.write_rules()
    with contextlib.ExitStack() as stack:
        for name in DEVICE_MANAGER:
            # Its unit needs a writable /sys, but announcing devices works without one.
            stack.enter_context(unit.drop_in("[Unit]\nConditionPathIsReadWrite=\n", name))
        unit.run("systemctl", "start", DEVICE_MANAGER[0])
        unit.run("systemctl", "stop", unit.UNIT, SERVICE)
        yield
        unit.run("systemctl", "stop", *DEVICE_MANAGER)


@pytest.fixture
def storage(daemon):
    """UDisks2, running."""
    unit.run("systemctl", "start", SERVICE)


@pytest.fixture
def listener(client):
    """A client that receives the signals of UDisks2 about its devices."""
    listener = client("root")
    listener.ask(new_method_call(BUS, "AddMatch", "s", (CHANGES,)))
    return listener


@pytest.fixture
def without_storage_service(stopped):
    """A device without UDisks2."""
    unit.run("systemctl", "stop", SERVICE)
    file = pathlib.Path("/lib/systemd/system", SERVICE)
    aside = shutil.move(file, "/run")
    unit.run("systemctl", "daemon-reload")
    yield
    shutil.move(aside, file)
    unit.run("systemctl", "daemon-reload")


def main_pid():
    """The process id of UDisks2; 0 when it does not run."""
    return int(unit.shown("MainPID", SERVICE))


def mount(disk):
    """Mounts a disk; from then on only the mount keeps its loop device."""
    disk.mount()
    disk.let_go()


def wait_until_told(listener, disk):
    """Waits until UDisks2 has announced that a disk is no part of the system. It treats a known
    loop device as a part until it has read the new file, and announces the file system first."""
    def is_told(message):
        properties = {}
        if message.header.fields.get(HeaderFields.path) == disk.path:
            properties = message.body[1]
        elif message.body[0] == disk.path:  # a new object, announced with all its properties
            properties = message.body[1].get(BLOCK, {})
        return properties.get("HintSystem") == ("b", False)
    while not is_told(listener.receive(timeout=PATIENCE)):
        pass


def wait_until_gone(root, disk):
    """Waits until a disk is not mounted in any namespace and UDisks2 has noticed it, so that its
    device is free for the next disk."""
    wait_until(lambda: not disk.places())
    wait_until(lambda: not disk.exists)
    wait_until(lambda: udisks.known_places(root, disk) is None)


def complaints():
    """The warnings of systemd."""
    unit.run("journalctl", "--sync")
    return unit.run("journalctl", "_PID=1", "-p", "warning", "-o", "cat", "--quiet")


def test_policy_turned_off_unmounts(storage, root, listener):
    with LoopDevice(disk_image()) as disk:
        mount(disk)
        wait_until_told(listener, disk)
        wait_until(lambda: udisks.known_places(root, disk))
        assert disk.places()
        assert root.ask(MEMORY_CARDS_OFF) == (True,)
        wait_until_gone(root, disk)


def test_unit_shows_on_what_a_device_rests(daemon):
    inside = pathlib.Path(f"/proc/{daemon}/root")  # as the daemon sees it
    with LoopDevice(disk_image()) as disk:
        assert (inside / "sys/class/block" / disk.name / "slaves").is_dir()


def test_storage_service_is_brought(stopped):
    unit.run("systemctl", "stop", SERVICE)
    unit.start()
    wait_until(main_pid)


def test_storage_service_that_is_stopped_comes_back(daemon):
    wait_until(main_pid)
    unit.run("systemctl", "stop", SERVICE)
    wait_until(main_pid)


def test_storage_service_that_is_killed_comes_back_and_is_followed(daemon, root):
    assert root.ask(MEMORY_CARDS_OFF) == (True,)
    wait_until(main_pid)
    for _ in range(3):
        before = main_pid()
        os.kill(before, signal.SIGKILL)
        with LoopDevice(disk_image()) as disk:
            mount(disk)
            wait_until(lambda: main_pid() not in (0, before))
            wait_until_gone(root, disk)


def test_device_without_storage_service_starts_without_complaint(without_storage_service):
    before = complaints()
    unit.start()
    assert unit.shown("ActiveState") == "active"
    assert complaints() == before
