# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Which storage is unmounted: what is mounted and external, on the bus of a forbidden policy."""

import pytest

from testbed import files
from testbed.plugins import LockPlugin
from testbed.stick import Stick
from testbed.waiting import wait_until

CARD, USB = "MemoryCardEnabled", "UsbStorageEnabled"
GOVERNED_BY = {"sdio": CARD, "usb": USB, "": CARD, None: CARD, "ieee1394": None,
               "thunderbolt": None}  # by the bus of the drive
MEMORY_CARD = Stick("card", "sdio")


@pytest.fixture
def plugged(storage):
    """The storage service, on the bus, with a mounted stick and a mounted memory card."""
    storage.appear()
    Stick().plug(storage)
    MEMORY_CARD.plug(storage)
    return storage


@pytest.mark.parametrize("forbidden", [CARD, USB])
@pytest.mark.parametrize("mounted", [False, True])
@pytest.mark.parametrize("system", [False, True])
@pytest.mark.parametrize("bus", GOVERNED_BY)
@pytest.mark.parametrize("plugged_in", ["before", "while forbidden"])
def test_forbidden_storage_is_unmounted(daemon, storage, plugged_in, bus, system, mounted,
                                        forbidden):
    stick = Stick(bus=bus, system=system, mounted=mounted)
    obeys = mounted and not system and GOVERNED_BY[bus] == forbidden
    storage.appear()
    if plugged_in == "before":
        stick.plug(storage)
        daemon.start_observed()
        assert daemon.calls(storage.NAME) == []
        daemon.forget()
        daemon.change(forbidden, False)
    else:
        daemon.start()
        daemon.change(forbidden, False)
        daemon.forget()
        stick.plug(storage)
    assert daemon.calls() == ([stick.order] if obeys else [])
    wait_until(lambda: stick.is_mounted(storage) == (mounted and not obeys))
    assert daemon.logged() == []


@pytest.mark.parametrize("bus", ["sdio", "usb", ""])
def test_allowed_storage_is_left_alone(daemon, storage, bus):
    stick = Stick(bus=bus)
    storage.appear()
    daemon.start()
    stick.plug(storage)
    assert daemon.calls() == []
    assert stick.is_mounted(storage)


def test_only_forbidden_storage_of_much_is_unmounted(daemon, storage):
    sticks = [Stick("a"), Stick("b", "sdio"), Stick("c", system=True), Stick("d", mounted=False),
              Stick("e"), Stick("f", None)]
    storage.appear()
    for stick in sticks:
        stick.plug(storage)
    daemon.start()
    daemon.change(USB, False)
    assert daemon.calls() == [sticks[0].order, sticks[4].order]
    daemon.forget()
    daemon.change(CARD, False)
    assert daemon.calls() == [sticks[1].order, sticks[5].order]


def test_device_with_a_partition_table_stays_mounted(daemon, storage):
    stick = Stick(partition_table=True)
    storage.appear()
    stick.plug(storage)
    daemon.start()
    daemon.change(USB, False)
    assert daemon.calls() == []
    assert stick.is_mounted(storage)


def test_switch_that_is_turned_off_unmounts(daemon, plugged, switches):
    switches.set_switch("storage", [33], True)
    daemon.start()
    switches.announce("storage", False)
    assert daemon.calls() == [Stick().order]
    wait_until(lambda: not Stick().is_mounted(plugged))


def test_switch_that_is_turned_on_mounts_nothing(daemon, storage, switches):
    switches.set_switch("storage", [33], False)
    storage.appear()
    Stick(mounted=False).plug(storage)
    daemon.start()
    switches.set_entries("storage", value=True)
    switches.announce("storage", True)
    assert daemon.calls() == []


def test_storage_that_appears_while_its_switch_is_off_is_unmounted(daemon, storage, switches):
    switches.set_switch("storage", [33], True)
    storage.appear()
    daemon.start()
    switches.set_entries("storage", value=False)
    daemon.forget()
    Stick().plug(storage)
    MEMORY_CARD.plug(storage)
    assert daemon.calls() == [Stick().order]


def test_storage_that_appears_while_locked_is_unmounted(daemon, storage):
    with LockPlugin("lock.so", "lock", [CARD]) as lock:
        storage.appear()
        daemon.start()
        lock.set_locked(CARD)
        daemon.forget()
        Stick().plug(storage)
        MEMORY_CARD.plug(storage)
        assert daemon.calls() == [MEMORY_CARD.order]


def test_lock_unmounts_nothing(daemon, plugged):
    """A lock changes the effective value, not the enforced one: what is mounted stays."""
    with LockPlugin("lock.so", "lock", [USB]) as lock:
        daemon.start()
        lock.set_locked(USB)
        lock.announce(USB, True)
        assert len(daemon.announcements()) == 1
        assert daemon.calls() == []
        assert Stick().is_mounted(plugged)


@pytest.mark.parametrize("stored, switch_on, locked, times", [
    (True, True, False, 0), (False, True, False, 2), (True, False, False, 2),
    (True, True, True, 1)], ids=["allowed", "forbidden", "switch off", "locked"])
def test_storage_at_start(daemon, plugged, switches, stored, switch_on, locked, times):
    """Each enforcement looks for storage. There are two at start, but one for a locked policy,
    which cannot be stored. The second comes before the daemon can receive the signal of the first
    unmount. The announcement at start unmounts nothing, because unmounts are under way."""
    switches.set_switch("storage", [33], switch_on)
    files.store({USB: stored})
    with LockPlugin("lock.so", "lock", [USB]) as lock:
        lock.set_locked(*([USB] if locked else []))
        daemon.start_observed()
        wait_until(lambda: len(daemon.transcript.calls("GetManagedObjects")) == 1)
        assert daemon.calls(plugged.NAME) == times * [Stick().order]
        wait_until(lambda: Stick().is_mounted(plugged) == (times == 0))
        assert MEMORY_CARD.is_mounted(plugged)
