# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Unmounting. What could not be unmounted, or is mounted elsewhere as well, is announced again."""

import time

import pytest

from testbed.partitions import (BLOCK_PATH, MOUNTED, PLACE, UNMOUNTED, Partitions, block, calls_of,
                                plug_stick)
from testbed.services.service import SILENCE, Fault, error
from testbed.services.storage import FILESYSTEM, Block
from testbed.waiting import wait_until

BUSY = "org.freedesktop.UDisks2.Error.DeviceBusy"
FIRST_PAUSE = 2.0  # seconds to the first reminder


@pytest.fixture
def mounted(present):
    """The storage service, on the bus, with a mounted block device."""
    present.plug(block(PLACE))
    return present


@pytest.fixture
def busy(mounted):
    """The same, where the device cannot be unmounted."""
    mounted.fail(error(BUSY), "Unmount")
    return mounted


def complaint(reason=BUSY):
    """The log line that the device cannot be unmounted."""
    return f'warning|systemsettings|Cannot unmount "/dev/sda1": {reason}'


def wait_for_unmounts(storage, count):
    """Waits until Unmount has been called so often."""
    wait_until(lambda: len(calls_of(storage, "Unmount")) == count)


def wait_until_unmounted(storage):
    """Waits until the block device is not mounted anywhere."""
    wait_until(lambda: not storage.places(BLOCK_PATH))


def wait_for_complaint(partitions):
    """Waits until the library has complained that it cannot unmount the device, and no more."""
    assert wait_until(partitions.take_log) == [complaint()]


def test_unmounted(present, partitions):
    plug_stick(present, PLACE)
    partitions.run()
    assert partitions.status() == MOUNTED
    partitions.unmount(BLOCK_PATH)
    wait_until(lambda: partitions.status() == UNMOUNTED)
    assert present.blocks[BLOCK_PATH].mount_points == ()


def test_options(mounted, partitions):
    partitions.run()
    partitions.list()
    partitions.unmount(BLOCK_PATH, {"force": True})
    wait_for_unmounts(mounted, 1)
    call, = calls_of(mounted, "Unmount")
    assert (call.path, call.interface) == (BLOCK_PATH, FILESYSTEM)
    assert call.arguments == ({"force": True},)
    assert call.error == ""  # the service has checked the types of the arguments


def test_no_partition(present, partitions):
    partitions.run()
    partitions.unmount("")
    partitions.settle(present)
    assert len(present.calls) == 1


def test_nobody_waits(mounted, partitions):
    mounted.fail(SILENCE, "Unmount")
    partitions.run()
    partitions.list()
    start = time.monotonic()
    partitions.unmount(BLOCK_PATH)
    assert time.monotonic() - start < 5
    wait_for_unmounts(mounted, 1)


def test_nothing_to_unmount(present, partitions):
    """It is no failure that the device is not mounted, or that the service has left."""
    present.plug(block())
    partitions.run()
    partitions.list()
    partitions.unmount(BLOCK_PATH)
    wait_for_unmounts(present, 1)
    present.leave()
    wait_until(lambda: partitions.list() == [])
    partitions.unmount(BLOCK_PATH)


def test_every_failure_is_told_to_who_wants_it(present):
    present.plug(block())
    with Partitions(QT_LOGGING_RULES="systemsettings.debug=true") as partitions:
        partitions.run()
        partitions.list()
        partitions.unmount(BLOCK_PATH)
        line = wait_until(partitions.take_log)[0]
        assert line.startswith("debug|systemsettings|")
        assert BLOCK_PATH in line
        assert "org.freedesktop.UDisks2.Error.NotMounted" in line


def test_from_the_announcement(present, partitions):
    partitions.unmount_announced()
    partitions.run()
    plug_stick(present, PLACE)
    for times in (1, 2, 3):
        wait_for_unmounts(present, times)
        wait_until(lambda: partitions.status() == UNMOUNTED)
        present.set_mount_points(BLOCK_PATH, PLACE)


@pytest.mark.parametrize("places, fault, reason", [
    ([PLACE], error(BUSY), BUSY), (100 * [PLACE], Fault(), "still mounted")],
    ids=["it fails", "it changes nothing"])
def test_reminders_come_at_growing_intervals(present, partitions, places, fault, reason):
    """A manager that unmounts again in vain and one that does not get the same reminders."""
    plug_stick(present, *places)
    present.fail(fault, "Unmount")
    partitions.run(BLOCK_PATH)
    start = time.monotonic()
    partitions.unmount_announced(manager=1)
    partitions.wait_for(*4 * [BLOCK_PATH])
    reminders = partitions.announced()[1:]
    times = [start, *(reminder["time"] for reminder in reminders)]
    pauses = [later - earlier for earlier, later in zip(times, times[1:])]
    # An announcement can be read late, and the pause after it is then shorter than it was.
    assert [pause > 0.9 * FIRST_PAUSE * 2 ** number for number, pause in enumerate(pauses)] == [
        True, True, True]
    partitions.wait_for(*4 * [BLOCK_PATH], manager=1)
    assert reminders[-1]["status"] == MOUNTED
    assert reminders[-1]["drive"]["connectionBus"] == 1
    wait_for_unmounts(present, 4)
    assert partitions.take_log() == [complaint(reason)]


def test_reminders_end_when_nobody_unmounts(busy, partitions):
    """The next failure is the first one again."""
    partitions.run(BLOCK_PATH)
    for count in (2, 3):
        partitions.unmount(BLOCK_PATH)
        start = time.monotonic()
        partitions.wait_for(*count * [BLOCK_PATH])
        assert time.monotonic() - start < 1.9 * FIRST_PAUSE
    assert partitions.take_log() == [complaint(BUSY)]


def test_pauses_begin_anew_when_it_was_unmounted(busy, partitions):
    partitions.unmount_announced()
    partitions.run()
    wait_for_unmounts(busy, 3)  # the next pause would be of four times the first
    busy.set_mount_points(BLOCK_PATH)
    busy.set_mount_points(BLOCK_PATH, PLACE)
    wait_for_unmounts(busy, 4)
    start = time.monotonic()
    wait_for_unmounts(busy, 5)
    assert time.monotonic() - start < 3 * FIRST_PAUSE
    assert partitions.take_log() == [complaint(), complaint()]


def test_first_failure_only_is_logged(busy, partitions):
    partitions.run()
    partitions.list()
    partitions.unmount(BLOCK_PATH)
    partitions.unmount(BLOCK_PATH)
    partitions.list(manager=1)
    partitions.unmount(BLOCK_PATH, manager=1)
    wait_for_unmounts(busy, 3)
    busy.mend()
    partitions.unmount(BLOCK_PATH)
    wait_until(lambda: partitions.status() == UNMOUNTED)
    assert partitions.take_log() == [complaint()]
    busy.fail(error(BUSY), "Unmount")
    busy.set_mount_points(BLOCK_PATH, PLACE)
    wait_until(lambda: partitions.status() == MOUNTED)
    partitions.unmount(BLOCK_PATH)
    wait_for_complaint(partitions)


def test_reminder_whoever_was_asked_to_unmount(busy, partitions):
    """The reminder does not depend on the manager that was asked, which is removed here."""
    partitions.run(BLOCK_PATH)
    partitions.list(manager=1)
    partitions.unmount(BLOCK_PATH, manager=1)
    wait_for_complaint(partitions)
    partitions.ask("remove", 1)
    partitions.wait_for(BLOCK_PATH, BLOCK_PATH)


@pytest.mark.parametrize("end", ["unmounted", "pulled out"])
def test_no_reminder_of_what_is_not_mounted(busy, partitions, end):
    """A second partition, which fails later, shows when a reminder would have come."""
    clock = busy.plug(Block("sdb1", mount_points=(PLACE,)))
    partitions.run(BLOCK_PATH, clock)
    for path in (BLOCK_PATH, clock):
        partitions.unmount(path)
        wait_until(partitions.take_log)
    partitions.forget()
    if end == "pulled out":
        busy.unplug(BLOCK_PATH)
    else:
        busy.set_mount_points(BLOCK_PATH)
    partitions.wait_for(clock)


def test_no_reminder_of_what_was_unmounted_in_one_place(present, partitions):
    """It is announced at once. A second partition shows when a reminder would have come."""
    present.plug(block("/a", "/b"))
    clock = present.plug(Block("sdb1", mount_points=(PLACE,)))
    partitions.run(BLOCK_PATH, clock)
    partitions.unmount(BLOCK_PATH)
    partitions.wait_for(BLOCK_PATH, clock, BLOCK_PATH)
    present.fail(error(BUSY), "Unmount")
    partitions.unmount(clock)
    wait_until(partitions.take_log)
    partitions.wait_for(BLOCK_PATH, clock, BLOCK_PATH, clock)


def test_no_reminder_while_the_service_is_gone(busy, partitions):
    partitions.unmount_announced()
    partitions.run()
    wait_for_complaint(partitions)
    busy.leave()
    wait_until(lambda: partitions.list() == [])
    assert partitions.paths() == [BLOCK_PATH]
    busy.mend()
    busy.appear()
    wait_until_unmounted(busy)
    assert len(calls_of(busy, "Unmount")) == 2


def test_other_places_are_announced_at_once(present, partitions):
    present.plug(block("/a", "/b", "/c"))
    partitions.unmount_announced()
    start = time.monotonic()
    partitions.run()
    wait_until_unmounted(present)
    assert time.monotonic() - start < FIRST_PAUSE
    assert len(calls_of(present, "Unmount")) == 3
    partitions.settle(present)
    assert partitions.paths() == 3 * [BLOCK_PATH]


def test_what_is_being_unmounted_is_not_announced(mounted, partitions):
    """The answer to the unmount decides; but another device at the same path is announced."""
    mounted.fail(SILENCE, "Unmount")
    partitions.unmount_announced()
    partitions.run()
    wait_for_unmounts(mounted, 1)
    mounted.set_mount_points(BLOCK_PATH, "/elsewhere")
    partitions.settle(mounted)
    assert partitions.paths() == [BLOCK_PATH]
    mounted.unplug(BLOCK_PATH)
    mounted.plug(block(PLACE))
    partitions.wait_for(BLOCK_PATH, BLOCK_PATH)
