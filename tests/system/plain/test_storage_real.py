# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon with the real UDisks2 and real file systems on loop devices.

A loop device is on no drive, so it counts as a memory card. Now and then UDisks2 waits 20 seconds
for an event of the kernel before it answers. Where the machine cannot give what this needs, a test
fails and says so.
"""

import contextlib

import pytest

from testbed.devices import MOUNT_POINT, PARTITIONS, LoopDevice, disk_image, upper_device
from testbed.udisks import UDisks
from testbed.waiting import wait_until

CARD = "MemoryCardEnabled"


@pytest.fixture(scope="module")
def udisks():
    """The real storage service."""
    with UDisks() as service:
        yield service


@pytest.fixture
def disk(udisks):
    """A loop device with a file system, not mounted."""
    with plugged_in(udisks) as device:
        yield device
    wait_until(lambda: udisks.places(device) is None)


@contextlib.contextmanager
def plugged_in(udisks):
    """A loop device with a file system that the storage service has seen."""
    with LoopDevice(disk_image()) as device:
        wait_until_known(udisks, device)
        yield device


@contextlib.contextmanager
def stacked(udisks, **how):
    """A mounted device that is built on a loop device."""
    with LoopDevice(disk_image()) as lower, upper_device(lower, **how) as upper:
        mount(udisks, upper)
        yield upper


def wait_until_known(udisks, device):
    """Waits until the storage service knows the file system of the device."""
    wait_until(lambda: udisks.places(device) is not None)


def mount(udisks, device):
    """Mounts a device and waits until the storage service has seen it."""
    wait_until_known(udisks, device)
    device.mount()
    wait_until(lambda: udisks.places(device))


def wait_until_unmounted(device):
    """Waits until the device is not mounted anywhere."""
    wait_until(lambda: not device.places())


def test_policy_turned_off_unmounts(udisks, disk, daemon):
    daemon.start()
    mount(udisks, disk)
    daemon.forget()
    assert disk.places() == [MOUNT_POINT]
    daemon.change(CARD, False)
    wait_until_unmounted(disk)
    wait_until(lambda: udisks.places(disk) == [])
    assert len(daemon.calls()) == 1
    assert daemon.logged() == []


def test_what_the_service_has_mounted_is_unmounted(udisks, disk, daemon):
    daemon.start()
    udisks.mount(disk)
    wait_until(lambda: udisks.places(disk))
    daemon.forget()
    assert disk.places()
    daemon.change(CARD, False)
    wait_until_unmounted(disk)
    assert daemon.logged() == []


def test_device_that_appears_while_forbidden_stays_usable(udisks, daemon):
    """Only the mount is removed: the device can be used later."""
    daemon.start_observed()
    daemon.change(CARD, False)
    with plugged_in(udisks) as disk:
        disk.mount()
        wait_until_unmounted(disk)
        wait_until(lambda: udisks.places(disk) == [])
        daemon.change(CARD, True)
        mount(udisks, disk)
        daemon.transcript.settle()
        assert disk.places()
    wait_until(lambda: udisks.places(disk) is None)


def test_file_system_in_use_is_unmounted_when_it_is_free(udisks, disk, daemon):
    complaint = (f'warning|systemsettings|Cannot unmount "{disk.node}": '
                 "org.freedesktop.UDisks2.Error.DeviceBusy")
    daemon.start()
    mount(udisks, disk)
    daemon.forget()
    with open(f"{MOUNT_POINT}/in-use", "w", encoding="utf-8"):
        daemon.change(CARD, False)
        wait_until(lambda: len(daemon.transcript.calls("Unmount")) > 1)
        assert daemon.logged() == [complaint]
        assert disk.places()
    wait_until_unmounted(disk)
    assert daemon.logged() == [complaint]


@pytest.mark.parametrize("place", [f"{MOUNT_POINT}-too", MOUNT_POINT],
                         ids=["two places", "twice in one place"])
def test_every_mount_is_unmounted(udisks, disk, daemon, place):
    daemon.start()
    mount(udisks, disk)
    disk.mount_again(place)
    assert disk.places() == [MOUNT_POINT, place]
    daemon.forget()
    daemon.change(CARD, False)
    wait_until_unmounted(disk)
    assert daemon.logged() == []


def test_service_that_was_killed_is_followed(udisks, disk, daemon):
    daemon.start_observed()
    daemon.change(CARD, False)
    udisks.kill()
    disk.mount()
    assert disk.places()
    udisks.start()
    wait_until_unmounted(disk)


def test_partitions_of_one_device_are_unmounted(udisks, daemon):
    with LoopDevice(disk_image(*PARTITIONS)) as disk:
        first, second = disk.add_partition(1), disk.add_partition(2)
        with first, second:
            wait_until_known(udisks, second)
            daemon.start()
            mount(udisks, first)
            daemon.forget()
            daemon.change(CARD, False)
            wait_until_unmounted(first)
            second.mount()
            wait_until_unmounted(second)
            assert len(daemon.calls()) == 2
            assert daemon.logged() == []


def test_upper_device_mounted_before_is_unmounted(udisks, daemon):
    with stacked(udisks) as upper:
        daemon.start()
        daemon.change(CARD, False)
        wait_until_unmounted(upper)
        assert len(daemon.calls()) == 1
        assert daemon.logged() == []


def test_upper_device_of_the_system_stays_mounted(udisks, daemon):
    """Only the kernel's link to the lower device makes the difference."""
    with stacked(udisks, is_told=False) as upper:
        daemon.start()
        daemon.change(CARD, False)
        assert daemon.calls() == []
        assert upper.places()
