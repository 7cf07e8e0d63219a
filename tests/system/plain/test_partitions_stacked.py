# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A device that rests on others, such as a decrypted stick or a logical volume, has the drive of
the lowest device. Directories of the same form as in /sys replace the kernel's device mapper."""

import time
from dataclasses import dataclass

import pytest

from testbed.devices import add_device, add_partition, device_tree
from testbed.partitions import EXTERNAL, MOUNTED, PLACE, SYSTEM, Partitions
from testbed.services.storage import Block, Drive, object_path

TOP = "dm-9"
TOP_PATH = object_path("block_devices", TOP)
LONG = 1000  # devices on top of each other
USB, CARD, DISK = "sda1", "mmcblk0p1", "vda1"  # each on a drive of its own


@dataclass(frozen=True)
class Stacked:
    """A block device as UDisks2 shows one that is built on others: on no drive, and a part of the
    system. It is the content of an encrypted device, or stands on those `below` it."""
    name: str
    encrypted: str = ""
    below: tuple = ()
    system: bool = True


STACKS = {  # from the bottom to the top; the place of the top one
    "decrypted stick": ([Stacked(TOP, USB)], ["external 1"]),
    "decrypted disk": ([Stacked(TOP, DISK)], ["system 3"]),
    "decrypted file": ([Stacked(TOP, "loop0")], ["external"]),
    "decrypted disk that says it is removable": (
        [Stacked(TOP, DISK, system=False)], ["system 3"]),
    "volume on a stick": ([Stacked(TOP, below=(USB,))], ["external 1"]),
    "volume on a disk": ([Stacked(TOP, below=(DISK,))], ["system 3"]),
    "many storeys": (
        [Stacked("dm-0", below=(USB,)), Stacked("dm-1", "dm-0"), Stacked("dm-2", below=("dm-1",)),
         Stacked(TOP, "dm-2")], ["external 1"]),
    "volume on disk and stick": ([Stacked(TOP, below=(DISK, USB))], ["external 1"]),
    "volume on stick and disk": (
        [Stacked("dm-0", below=(DISK,)), Stacked("dm-1", USB),
         Stacked(TOP, below=("dm-0", "dm-1"))], ["external 1"]),
    "volume on stick and card": (
        [Stacked(TOP, below=(USB, CARD))], ["external 0", "external 1"]),
    "volume twice on one stick": (
        [Stacked("dm-0", USB), Stacked("dm-1", below=(USB,)),
         Stacked(TOP, below=("dm-0", "dm-1"))], ["external 1"]),
    "device with a slash in its name": (
        [Stacked("box/c0d0", below=(USB,)), Stacked(TOP, below=("box!c0d0",))], ["external 1"]),
    "on nothing": ([Stacked(TOP)], ["system"]),
    "on nothing, removable": ([Stacked(TOP, system=False)], ["external"]),
    "on what nobody knows": ([Stacked(TOP, below=("ram0",))], ["system"]),
    "on a stick and what nobody knows": ([Stacked(TOP, below=("ram0", USB))], ["external 1"]),
    "on itself": ([Stacked(TOP, TOP)], ["system"]),
    "in a circle": (
        [Stacked("dm-0", TOP), Stacked("dm-1", "dm-0"), Stacked(TOP, "dm-1")], ["system"]),
    "in a circle of the kernel's": (
        [Stacked("dm-0", below=(TOP,)), Stacked(TOP, below=("dm-0",), system=False)],
        ["external"]),
    "in a circle with a way out": (
        [Stacked("dm-0", below=(TOP, USB)), Stacked(TOP, below=("dm-0",))], ["external 1"]),
}


@pytest.fixture(autouse=True)
def tree():
    """An empty tree of the kernel's devices, which the tests fill."""
    with device_tree():
        yield


def plug_drives(storage):
    """Plugs in three devices with a drive each, and one without."""
    for name, bus, is_system in ((USB, "usb", False), (CARD, "sdio", False), (DISK, "nvme", True)):
        drive = storage.plug(Drive(name, bus))
        storage.plug(Block(name, drive, is_system, filesystem=False))
    storage.plug(Block("loop0", filesystem=False))


def plug_stack(storage, stack):
    """Plugs in devices, of which the one called TOP has a file system."""
    for each in stack:
        add_device(each.name.replace("/", "!"), *each.below)
        backing = object_path("block_devices", each.encrypted) if each.encrypted else "/"
        storage.plug(Block(each.name, system=each.system, filesystem=each.name == TOP,
                           backing=backing))


def place(partition):
    """Type and bus of a partition: "external 1" is on removable storage of bus 1."""
    type_ = {SYSTEM: "system", EXTERNAL: "external"}[partition["type"]]
    return f"{type_} {partition['drive'].get('connectionBus', '')}".strip()


@pytest.mark.parametrize("stack, places", STACKS.values(), ids=STACKS)
def test_place(present, partitions, stack, places):
    plug_drives(present)
    plug_stack(present, stack)
    partitions.make_application()
    found = partitions.list()
    assert [place(partition) for partition in found] == places
    assert {(partition["path"], partition["device"]) for partition in found} == {
        (TOP_PATH, f"/dev/{TOP}")}
    assert {place(partition) for partition in partitions.list(EXTERNAL)} <= set(places)


def test_partition_of_an_array(present, partitions):
    plug_drives(present)
    add_device("md0", USB)
    add_partition("md0p1", "md0")
    present.plug(Block("md0", system=True, filesystem=False))
    present.plug(Block("md0p1", system=True))
    partitions.make_application()
    assert place(partitions.only()) == "external 1"


def test_inner_device_that_the_service_does_not_show(present, partitions):
    plug_drives(present)
    add_device("dm-0", USB)
    plug_stack(present, [Stacked(TOP, below=("dm-0",))])
    partitions.make_application()
    assert place(partitions.only()) == "external 1"


def test_partly_known_place_is_announced_and_again_when_it_is_known(present, partitions):
    partitions.run()
    plug_drives(present)
    plug_stack(present, [Stacked(TOP, below=(USB, "later0"))])
    partitions.wait_for(TOP_PATH)
    present.set_mount_points(TOP_PATH, PLACE)
    partitions.wait_for(TOP_PATH, TOP_PATH)
    card = present.plug(Drive("later", "sdio"))
    present.plug(Block("later0", card, filesystem=False))
    partitions.wait_for(*4 * [TOP_PATH])
    found = [place(partition) for partition in partitions.announced()]
    assert found == ["external 1", "external 1", "external 0", "external 1"]


def test_drive_of_its_own_counts(present, partitions):
    plug_drives(present)
    add_device(TOP, USB)
    present.plug(Block(TOP, object_path("drives", DISK), system=True))
    partitions.make_application()
    assert place(partitions.only()) == "system 3"


@pytest.mark.parametrize("top", [Stacked(TOP, USB), Stacked(TOP, below=(USB,))],
                         ids=["decrypted", "volume"])
def test_partition_waits_for_what_it_is_built_on(present, partitions, top):
    partitions.run()
    plug_stack(present, [top])
    partitions.settle(present)
    assert partitions.announced() == []
    plug_drives(present)
    partitions.wait_for(TOP_PATH)
    assert place(partitions.announced()[0]) == "external 1"


def test_each_bus_is_announced(present, partitions):
    """It has to be unmounted if one of the two buses is forbidden."""
    plug_drives(present)
    plug_stack(present, [Stacked(TOP, below=(USB, CARD))])
    partitions.run()
    partitions.wait_for(TOP_PATH, TOP_PATH)
    partitions.forget()
    present.set_mount_points(TOP_PATH, PLACE)
    partitions.wait_for(TOP_PATH, TOP_PATH)
    found = [place(partition) for partition in partitions.announced()]
    assert found == ["external 0", "external 1"]


def test_what_is_opened_later_is_followed(present, partitions):
    plug_drives(present)
    partitions.run()
    partitions.settle(present)
    plug_stack(present, [Stacked(TOP, USB)])
    present.set_mount_points(TOP_PATH, PLACE)
    partitions.wait_for(TOP_PATH, TOP_PATH)
    assert partitions.announced()[1]["status"] == MOUNTED
    assert place(partitions.announced()[1]) == "external 1"


def listing_time(partitions):
    """The least seconds in which the library lists all partitions."""
    partitions.make_application()
    partitions.list()
    times = [time.monotonic()]
    for _ in range(5):
        partitions.list()
        times.append(time.monotonic())
    return min(end - start for start, end in zip(times, times[1:]))


@pytest.mark.parametrize("bottom, found", [(USB, "external 1"), (f"dm-{LONG - 1}", "system")],
                         ids=["on a stick", "in a circle"])
def test_long_chain_costs_as_much_as_single_devices(present, partitions, bottom, found):
    plug_drives(present)
    for number in range(LONG):
        present.plug(Block(f"single{number}", mount_points=(PLACE,)))
    with Partitions() as without_chain:
        reference = listing_time(without_chain)
    for number in range(LONG):
        below = f"dm-{number - 1}" if number else bottom
        present.plug(Block(f"dm-{number}", system=True, mount_points=(PLACE,),
                           backing=object_path("block_devices", below)))
    assert listing_time(partitions) < 8 * reference  # twice as many devices
    assert {place(partition) for partition in partitions.list()
            if partition["device"].startswith("/dev/dm-")} == {found}
