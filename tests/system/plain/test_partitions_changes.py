# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Changes of partitions after the library has found them, and which of them are announced."""

import dbus
import pytest

from testbed.partitions import (BLOCK_PATH, EXTERNAL, MOUNTED, PLACE, STICK, STICK_PATH, SYSTEM,
                                UNMOUNTED, block, plug_stick)
from testbed.services.service import PROPERTIES
from testbed.services.storage import (BLOCK, DRIVE, FILESYSTEM, OBJECT_MANAGER, PARTITION_TABLE,
                                      ROOT, Drive, mount_points, object_path)
from testbed.waiting import wait_until

CARD, CARD_PATH = Drive("card", "sdio"), object_path("drives", "card")


def mount(*places):
    """A change: the block device is mounted in these places and unmounted from all others."""
    return lambda storage: storage.set_mount_points(BLOCK_PATH, *places)


def in_turn(*actions):
    """Several changes, in order."""
    def act(storage):
        for action in actions:
            action(storage)
    return act


def silently(action):
    """A change that the service signals without the new value."""
    def act(storage):
        storage.tells = False
        action(storage)
    return act


def tell_of_another_property(storage):
    storage.signal(BLOCK_PATH, PROPERTIES, "PropertiesChanged", "sa{sv}as", BLOCK,
                   {"HintSystem": True}, ["IdLabel"])


def tell_of_another_interface(storage):
    storage.signal(ROOT, OBJECT_MANAGER, "InterfacesAdded", "oa{sa{sv}}", BLOCK_PATH,
                   {PARTITION_TABLE: dbus.Dictionary({}, signature="sv")})


def make_another_file_system(storage):
    storage.set_filesystem(BLOCK_PATH, False)
    storage.set_filesystem(BLOCK_PATH, True)


def plug_in(storage):
    storage.plug(block(PLACE, drive=STICK_PATH))


def pull_out(storage):
    storage.unplug(BLOCK_PATH)


def replug_the_drive(storage):
    storage.unplug(STICK_PATH)
    storage.plug(STICK)


CHANGES = {  # where it is mounted before, what happens, number of announcements, status after it
    "mounted": ([], mount(PLACE), 1, MOUNTED),
    "mounted in two places": ([], mount(PLACE, "/mnt"), 1, MOUNTED),
    "mounted in a second place": ([PLACE], mount(PLACE, "/mnt"), 0, MOUNTED),
    "unmounted from one of two": ([PLACE, "/mnt"], mount(PLACE), 1, MOUNTED),
    "mounted elsewhere instead": ([PLACE], mount("/mnt"), 1, MOUNTED),
    "unmounted": ([PLACE], mount(), 0, UNMOUNTED),
    "told that it is not mounted": ([], mount(), 0, UNMOUNTED),
    "mounted again": ([PLACE], in_turn(mount(), mount(PLACE)), 1, MOUNTED),
    "mounted twice": ([], in_turn(mount(PLACE), mount(), mount(PLACE)), 2, MOUNTED),
    "another property": ([], tell_of_another_property, 0, UNMOUNTED),
    "another interface": ([], tell_of_another_interface, 0, UNMOUNTED),
    "told of a second time": ([PLACE], plug_in, 0, MOUNTED),
    "another file system": ([PLACE], make_another_file_system, 1, UNMOUNTED),
    "plugged in again": ([PLACE], in_turn(pull_out, plug_in), 1, MOUNTED),
    "drive pulled and plugged": ([PLACE], replug_the_drive, 1, MOUNTED),
    "mounted, without being told where": ([], silently(mount(PLACE)), 1, MOUNTED),
    "unmounted, without being told": ([PLACE], silently(mount()), 0, UNMOUNTED),
}


def bus(partition):
    """The bus of a partition's drive, if it is known."""
    return partition["drive"].get("connectionBus")


def change(path, interface, name, value):
    """The service reports another value of a property."""
    return lambda storage: storage.signal(path, PROPERTIES, "PropertiesChanged", "sa{sv}as",
                                          interface, {name: value}, [])


def plug_the_card(storage):
    storage.plug(CARD)


name_the_card = change(BLOCK_PATH, BLOCK, "Drive", dbus.ObjectPath(CARD_PATH))

NEW_KINDS = {  # what happens to what is on a stick; its type and its bus after it
    "system": (change(BLOCK_PATH, BLOCK, "HintSystem", True), SYSTEM, 1),
    "another bus": (change(STICK_PATH, DRIVE, "ConnectionBus", "sdio"), EXTERNAL, 0),
    "another drive": (in_turn(plug_the_card, name_the_card), EXTERNAL, 0),
    "another drive, plugged later": (in_turn(name_the_card, plug_the_card), EXTERNAL, 0),
}


@pytest.mark.parametrize("before, action, announcements, status", CHANGES.values(), ids=CHANGES)
def test_change(present, partitions, before, action, announcements, status):
    plug_stick(present, *before)
    partitions.run(BLOCK_PATH)
    partitions.forget()
    action(present)
    wait_until(lambda: [each["status"] for each in partitions.list()] == [status])
    partitions.wait_for(*announcements * [BLOCK_PATH])
    partitions.settle(present)
    assert partitions.paths() == announcements * [BLOCK_PATH]
    assert [bus(partition) for partition in partitions.announced()] == announcements * [1]
    assert partitions.status() == status


@pytest.mark.parametrize("is_mounted", [True, False], ids=["mounted", "unmounted"])
@pytest.mark.parametrize("action, type_, number", NEW_KINDS.values(), ids=NEW_KINDS)
def test_other_kind_of_storage(present, partitions, action, type_, number, is_mounted):
    """A mounted partition is announced again, because another policy can apply now."""
    plug_stick(present, *[PLACE] * is_mounted)
    partitions.run(BLOCK_PATH)
    partitions.forget()
    action(present)
    partitions.settle(present)
    found = partitions.announced() if is_mounted else partitions.list()
    assert [(each["type"], bus(each)) for each in found] == [(type_, number)]
    assert len(partitions.announced()) == is_mounted


def test_partition_waits_for_its_drive(present, partitions):
    partitions.run()
    partitions.settle(present)
    present.plug(block(PLACE, drive=STICK_PATH))
    partitions.settle(present)
    assert partitions.announced() == []
    assert partitions.only()["drive"] == {}
    present.plug(STICK)
    partitions.wait_for(BLOCK_PATH)
    announced, = partitions.announced()
    assert bus(announced) == 1
    assert partitions.only()["drive"] == announced["drive"]
    partitions.settle(present)
    assert partitions.paths() == [BLOCK_PATH]


def test_drive_that_is_named_later(present, partitions):
    present.plug(block())
    present.plug(STICK)
    partitions.run()
    assert partitions.only()["drive"] == {}
    change(BLOCK_PATH, BLOCK, "Drive", dbus.ObjectPath(STICK_PATH))(present)
    wait_until(lambda: bus(partitions.only()) == 1)


def test_what_is_pulled_out_is_forgotten(present, partitions):
    plug_stick(present)
    partitions.run()
    assert len(partitions.list()) == 1
    present.set_filesystem(BLOCK_PATH, False)
    wait_until(lambda: partitions.list() == [])
    present.set_filesystem(BLOCK_PATH, True)
    wait_until(lambda: len(partitions.list()) == 1)
    present.unplug(STICK_PATH)
    wait_until(lambda: partitions.only()["drive"] == {})
    present.unplug(BLOCK_PATH)
    wait_until(lambda: partitions.list() == [])


def test_signal_of_another_service(present, partitions, audio_policy, transcript):
    plug_stick(present)
    partitions.run(BLOCK_PATH)
    audio_policy.appear()
    transcript.clear()
    audio_policy.signal(BLOCK_PATH, PROPERTIES, "PropertiesChanged", "sa{sv}as", FILESYSTEM,
                        {"MountPoints": mount_points(["/mnt"])}, [])
    transcript.wait_for(lambda message: message.member == "PropertiesChanged")
    partitions.settle(present)
    assert partitions.paths() == [BLOCK_PATH]
    assert partitions.status() == UNMOUNTED
