# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The partitions that the library lists, and when it first looks for them."""

import threading

import pytest

from testbed.partitions import (BLOCK_PATH, EXTERNAL, MOUNTED, PLACE, STICK_PATH, SYSTEM, UNMOUNTED,
                                block, listings, plug_stick)
from testbed.services.service import on_loop
from testbed.services.storage import Block, Drive
from testbed.waiting import PATIENCE, wait_until


def test_description(present, partitions):
    odd = "/run/media/m\u00fcll with blanks"
    plug_stick(present, odd, "/mnt")
    vda = present.plug(Block("vda", system=True))
    partitions.make_application()
    drive = {"connectionBus": 1, "vendor": "Maker", "model": "Model", "removable": True}
    assert partitions.list() == [
        {"path": BLOCK_PATH, "device": "/dev/sda1", "place": odd, "drive": drive,
         "type": EXTERNAL, "status": MOUNTED},
        {"path": vda, "device": "/dev/vda", "place": "", "drive": {}, "type": SYSTEM,
         "status": UNMOUNTED}]


@pytest.mark.parametrize("name, bus", [("sdio", 0), ("usb", 1), ("ieee1394", 2), ("nvme", 3),
                                       ("USB", 3), ("", None)])
def test_bus_of_the_drive(present, partitions, name, bus):
    present.plug(Drive("stick", name, "Maker", "Model"))
    present.plug(block(drive=STICK_PATH))
    partitions.make_application()
    drive = partitions.only()["drive"]
    assert drive.get("connectionBus") == bus
    assert drive["model"] == "Model"


@pytest.mark.parametrize("drive", ["/", STICK_PATH, BLOCK_PATH],
                         ids=["none", "not there", "itself"])
def test_missing_drive(present, partitions, drive):
    present.plug(block(drive=drive))
    partitions.make_application()
    assert partitions.only()["drive"] == {}


@pytest.mark.parametrize("types, names", [
    (0x0F, ["system", "whole", "zpart"]), (0x100F, ["system", "zpart"]), (0x01, ["system"]),
    (0x08, ["whole", "zpart"]), (0x1008, ["zpart"]), (0x02, []), (0x04, []), (0x00, []),
    (0x1000, []), (0x0FF0, [])])
def test_types(present, partitions, types, names):
    present.plug(Block("system", system=True))
    present.plug(Block("whole", partition_table=True))
    present.plug(Block("table", filesystem=False, partition_table=True))
    present.plug(Block("zpart"))
    partitions.make_application()
    assert [each["device"] for each in partitions.list(types)] == [f"/dev/{name}" for name in names]


def test_one_listing_is_enough_for_hundreds(storage, partitions):
    for number in range(500):
        drive = storage.plug(Drive(f"{number}", "usb"))
        storage.plug(Block(f"{number}", drive, mount_points=(PLACE,)))
    storage.appear()
    partitions.make_application()
    assert len(partitions.list()) == 500
    partitions.run()
    wait_until(lambda: len(partitions.announced()) == 500)
    assert len(partitions.list()) == 500
    extra = storage.plug(Block("extra"))
    wait_until(lambda: partitions.paths()[500:] == [extra])
    storage.set_mount_points(extra, PLACE)
    wait_until(lambda: partitions.paths()[500:] == [extra, extra])
    assert [call.member for call in storage.calls] == ["GetManagedObjects"]


def test_first_look_is_when_the_loop_starts(present, partitions):
    plug_stick(present, PLACE)
    partitions.make_application()
    assert present.calls == []
    partitions.run(BLOCK_PATH)
    announced, = partitions.announced()
    assert announced["status"] == MOUNTED
    assert announced["drive"]["connectionBus"] == 1
    partitions.settle(present)
    assert partitions.paths() == [BLOCK_PATH]


def test_nothing_is_lost_after_an_early_listing(present, partitions):
    plug_stick(present)
    partitions.make_application()
    assert partitions.status() == UNMOUNTED
    assert partitions.announced() == []
    present.set_mount_points(BLOCK_PATH, PLACE)  # nothing of this is seen before the loop runs
    partitions.run(BLOCK_PATH, BLOCK_PATH)
    assert [each["status"] for each in partitions.announced()] == [UNMOUNTED, MOUNTED]
    assert partitions.status() == MOUNTED
    assert listings(present) == 1


@pytest.mark.parametrize("early", [True, False], ids=["asked before its turn", "left to the loop"])
def test_signals_older_than_the_listing_are_ignored(storage, partitions, transcript, early):
    transcript.clear()
    replugged, remounted = storage.plug(Block("a")), storage.plug(block(PLACE))
    heard = threading.Event()

    @on_loop
    def change():
        """A change after the library has subscribed and before the service makes the listing."""
        storage.appear()
        heard.wait(PATIENCE)
        storage.unplug(storage.plug(Block("passing")))
        storage.unplug(replugged)
        storage.plug(Block("a"))
        storage.set_mount_points(remounted)
        storage.set_mount_points(remounted, PLACE)

    def has_asked():
        partitions.ask("events")
        return transcript.calls("GetManagedObjects")
    # A connection that is new in this turn of the event loop would deliver signals late.
    partitions.make_application()
    for _ in range(3):
        partitions.ask("events")
    service = threading.Thread(target=change)
    service.start()
    wait_until(has_asked)
    heard.set()
    if early:
        assert len(partitions.list()) == 2
    partitions.run()
    partitions.wait_for(replugged, remounted)
    partitions.settle(storage)
    assert partitions.paths() == [replugged, remounted]
    assert partitions.announced()[1]["status"] == MOUNTED
    assert len(partitions.list()) == 2
    assert listings(storage) == 1
    service.join()
