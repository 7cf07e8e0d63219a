# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Which storage is unmounted: what is mounted and external, on the bus of a forbidden policy."""

import pytest

from testbed import files
from testbed.devices import add_device, device_tree
from testbed.services.storage import Block
from testbed.stick import Stick
from testbed.waiting import wait_until

CARD, USB = "MemoryCardEnabled", "UsbStorageEnabled"
GOVERNED_BY = {"sdio": CARD, "usb": USB, "": CARD, None: CARD, "ieee1394": None,
               "thunderbolt": None}  # by the bus of the drive
MEMORY_CARD = Stick("card", "sdio")


@pytest.fixture
def plugged(present):
    """The storage service, on the bus, with a mounted stick and a mounted memory card."""
    Stick().plug(present)
    MEMORY_CARD.plug(present)
    return present


@pytest.mark.parametrize("forbidden", [CARD, USB])
@pytest.mark.parametrize("mounted", [False, True])
@pytest.mark.parametrize("system", [False, True])
@pytest.mark.parametrize("bus", GOVERNED_BY)
@pytest.mark.parametrize("plugged_in", ["before", "while forbidden"])
def test_forbidden_storage_is_unmounted(daemon, present, plugged_in, bus, system, mounted,
                                        forbidden):
    stick = Stick(bus=bus, system=system, mounted=mounted)
    obeys = mounted and not system and GOVERNED_BY[bus] == forbidden
    if plugged_in == "before":
        stick.plug(present)
        daemon.start_observed()
        assert daemon.calls(present.NAME) == []
        daemon.forget()
        daemon.change(forbidden, False)
    else:
        daemon.start()
        daemon.change(forbidden, False)
        daemon.forget()
        stick.plug(present)
    assert daemon.calls() == ([stick.order] if obeys else [])
    wait_until(lambda: stick.is_mounted(present) == (mounted and not obeys))
    assert daemon.logged() == []


def test_only_forbidden_storage_of_much_is_unmounted(daemon, present):
    sticks = [Stick("a"), Stick("b", "sdio"), Stick("c", system=True), Stick("d", mounted=False),
              Stick("e"), Stick("f", None)]
    for stick in sticks:
        stick.plug(present)
    daemon.start()
    daemon.change(USB, False)
    assert daemon.calls() == [sticks[0].order, sticks[4].order]
    daemon.forget()
    daemon.change(CARD, False)
    assert daemon.calls() == [sticks[1].order, sticks[5].order]


def test_device_with_a_partition_table_stays_mounted(daemon, present):
    stick = Stick(partition_table=True)
    stick.plug(present)
    daemon.start_observed()
    # It is announced like any other; while it is forbidden, it would be unmounted then.
    daemon.transcript.wait_for(lambda message: message.signature == "a{oa{sa{sv}}}")
    daemon.forget()
    daemon.change(USB, False)
    assert daemon.calls() == []
    assert stick.is_mounted(present)


@pytest.mark.parametrize("policy", [CARD, USB])
def test_volume_of_two_buses_obeys_both_policies(daemon, present, policy):
    stick, card, volume = Stick(mounted=False), Stick("card", "sdio", mounted=False), Stick("dm1")
    stick.plug(present)
    card.plug(present)
    with device_tree():
        add_device(volume.id, card.id, stick.id)
        present.plug(Block(volume.id, system=True))
        volume.mount(present)
        daemon.start()
        daemon.change(policy, False)
        wait_until(lambda: not volume.is_mounted(present))
        assert daemon.calls() == [volume.order]


def test_switch_that_is_turned_off_unmounts(daemon, plugged, switches):
    switches.set_switch("storage", [33], True)
    daemon.start()
    switches.announce("storage", False)
    assert daemon.calls() == [Stick().order]
    wait_until(lambda: not Stick().is_mounted(plugged))


def test_storage_that_appears_while_its_switch_is_off_is_unmounted(daemon, present, switches):
    switches.set_switch("storage", [33], True)
    daemon.start()
    switches.set_entries("storage", value=False)
    daemon.forget()
    Stick().plug(present)
    MEMORY_CARD.plug(present)
    assert daemon.calls() == [Stick().order]


def test_storage_that_appears_while_locked_is_unmounted(daemon, present, lock_plugin):
    lock = lock_plugin(CARD)
    daemon.start()
    lock.set_locked(CARD)
    daemon.forget()
    Stick().plug(present)
    MEMORY_CARD.plug(present)
    assert daemon.calls() == [MEMORY_CARD.order]


def test_lock_unmounts_nothing(daemon, plugged, lock_plugin):
    """A lock changes the effective value, not the enforced one: what is mounted stays."""
    lock = lock_plugin(USB)
    daemon.start()
    lock.set_locked(USB)
    lock.announce(USB, True)
    assert len(daemon.announcements()) == 1
    assert daemon.calls() == []
    assert Stick().is_mounted(plugged)


@pytest.mark.parametrize("stored, switch_on, locked, times", [
    (True, True, [], 0), (False, True, [], 2), (True, False, [], 2), (True, True, [USB], 1)],
    ids=["allowed", "forbidden", "switch off", "locked"])
def test_storage_at_start(daemon, plugged, switches, lock_plugin, stored, switch_on, locked, times):
    """Each enforcement looks for storage. There are two at start, but one for a locked policy,
    which cannot be stored. The second comes before the daemon can receive the signal of the first
    unmount. The announcement at start unmounts nothing, because unmounts are under way."""
    switches.set_switch("storage", [33], switch_on)
    files.store({USB: stored})
    lock_plugin(USB).set_locked(*locked)
    daemon.start_observed()
    wait_until(lambda: len(daemon.transcript.calls("GetManagedObjects")) == 1)
    assert daemon.calls(plugged.NAME) == times * [Stick().order]
    wait_until(lambda: Stick().is_mounted(plugged) == (times == 0))
    assert MEMORY_CARD.is_mounted(plugged)
