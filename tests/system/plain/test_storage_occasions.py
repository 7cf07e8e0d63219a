# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""When forbidden storage is unmounted: when its policy is enforced, and when it appears later."""

import pytest

from testbed.services.service import PROPERTIES, SILENCE
from testbed.services.storage import BLOCK, DRIVE, Block, Drive
from testbed.stick import Stick
from testbed.waiting import wait_until

CARD, USB = "MemoryCardEnabled", "UsbStorageEnabled"
STICK, UNMOUNTED = Stick(), Stick(mounted=False)


@pytest.fixture
def present(storage):
    """The storage service, on the bus."""
    storage.appear()
    return storage


def wait_until_unmounted(storage):
    """Waits until the stick is not mounted."""
    wait_until(lambda: not STICK.is_mounted(storage))


def test_allowing_mounts_nothing(daemon, present):
    STICK.plug(present)
    daemon.start()
    daemon.change(USB, False)
    wait_until_unmounted(present)
    daemon.forget()
    daemon.change(USB, True)
    assert daemon.calls() == []
    assert not STICK.is_mounted(present)
    STICK.mount(present)
    assert daemon.calls() == []


@pytest.mark.parametrize("tells", [True, False], ids=["told where", "told that it changed"])
def test_storage_mounted_later_is_unmounted(daemon, present, tells):
    UNMOUNTED.plug(present)
    present.tells = tells
    daemon.start_observed()
    daemon.change(USB, False)
    assert daemon.calls(present.NAME) == []
    STICK.mount(present)
    daemon.transcript.wait_for(lambda message: message.member == "Unmount")
    wait_until_unmounted(present)
    assert daemon.calls(present.NAME) == [STICK.order]


def test_storage_mounted_again_is_unmounted_again(daemon, present):
    STICK.plug(present)
    daemon.start_observed()
    daemon.change(USB, False)
    for times in (1, 2, 3):
        wait_until_unmounted(present)
        assert daemon.calls(present.NAME) == times * [STICK.order]
        STICK.mount(present)


def test_file_system_made_later_is_seen(daemon, present):
    UNMOUNTED.plug(present)
    present.set_filesystem(STICK.path, False)
    daemon.start()
    daemon.change(USB, False)
    daemon.forget()
    present.set_filesystem(STICK.path, True)
    assert daemon.calls() == []
    STICK.mount(present)
    assert daemon.calls() == [STICK.order]


@pytest.mark.parametrize("interface, name, before, after", [
    (BLOCK, "HintSystem", Stick(system=True), False),
    (DRIVE, "ConnectionBus", Stick(bus="nvme"), "usb")])
def test_mounted_storage_that_turns_out_to_be_forbidden(daemon, present, interface, name, before,
                                                        after):
    before.plug(present)
    daemon.start()
    daemon.change(USB, False)
    daemon.forget()
    path = present.blocks[before.path].drive if interface == DRIVE else before.path
    present.signal(path, PROPERTIES, "PropertiesChanged", "sa{sv}as", interface, {name: after}, [])
    assert daemon.calls() == [before.order]


def test_storage_without_its_drive_waits_for_it(daemon, present):
    """Without its drive it is not known whether it is a memory card."""
    daemon.start()
    daemon.change(CARD, False)
    daemon.change(USB, False)
    daemon.forget()
    present.plug(Block(STICK.id, "/org/freedesktop/UDisks2/drives/late",
                       mount_points=(STICK.mount_point,)))
    assert daemon.calls() == []
    daemon.change(CARD, True)
    present.plug(Drive("late", "usb"))
    assert daemon.calls() == [STICK.order]


def test_storage_that_was_pulled_out_is_forgotten(daemon, present):
    STICK.plug(present)
    daemon.start()
    present.unplug(STICK.path)
    daemon.forget()
    daemon.change(USB, False)
    assert daemon.calls() == []
    STICK.plug(present)
    assert daemon.calls() == [STICK.order]


def test_same_value_unmounts_nothing(daemon, present):
    """The storage stays mounted, and nothing reminds the daemon of it."""
    daemon.start()
    daemon.change(USB, False)
    present.fail(SILENCE, "Unmount")
    STICK.plug(present)
    daemon.forget()
    daemon.change(USB, False)
    assert daemon.calls() == []


def test_absent_service_is_no_failure(daemon):
    daemon.start()
    daemon.change(USB, False)
    daemon.change(USB, True)
    daemon.change(CARD, False)
    assert daemon.calls() == []
    assert daemon.logged() == []


@pytest.mark.parametrize("was_there", [False, True])
def test_storage_of_a_service_that_appears_is_unmounted(daemon, storage, was_there):
    if was_there:
        storage.appear()
    daemon.start()
    daemon.change(USB, False)
    storage.leave()
    STICK.plug(storage)
    daemon.forget()
    storage.appear()
    wait_until_unmounted(storage)
    assert daemon.calls() == [STICK.order]
    assert daemon.logged() == []


def test_storage_of_a_service_that_left_is_not_unmounted(daemon, present):
    STICK.plug(present)
    daemon.start()
    present.leave()
    daemon.forget()
    daemon.change(USB, False)
    assert daemon.calls() == []
    assert daemon.logged() == []
