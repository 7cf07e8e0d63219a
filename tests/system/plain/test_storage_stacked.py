# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Encrypted sticks and logical volumes are governed by the policies of the device below.

The kernel's device mapper, which not every machine has, is replaced in both places that the
daemon's library reads: in the objects of the storage service, and by directories of the form of
/sys.
"""

import pytest

from testbed.devices import add_device, device_tree
from testbed.services.storage import Block
from testbed.stick import Stick
from testbed.waiting import wait_until

CARD, USB = "MemoryCardEnabled", "UsbStorageEnabled"
STICK, UPPER = Stick(mounted=False), Stick("dm0")


@pytest.fixture(params=["decrypted", "logical volume"])
def open_upper(request, storage):
    """Plugs in and mounts what is built on the stick: it is on no drive, and looks like a part of
    the system."""
    def plug():
        is_decrypted = request.param == "decrypted"
        add_device(UPPER.id, STICK.id)
        storage.plug(Block(UPPER.id, system=True, backing=STICK.path if is_decrypted else "/"))
        UPPER.mount(storage)
    storage.appear()
    with device_tree():
        yield plug


def test_opened_before(daemon, storage, open_upper):
    STICK.plug(storage)
    open_upper()
    daemon.start()
    daemon.change(USB, False)
    wait_until(lambda: not UPPER.is_mounted(storage))
    assert daemon.calls() == [UPPER.order]


def test_opened_while_forbidden(daemon, storage, open_upper):
    STICK.plug(storage)
    daemon.start()
    daemon.change(USB, False)
    daemon.forget()
    open_upper()
    wait_until(lambda: not UPPER.is_mounted(storage))
    assert daemon.calls() == [UPPER.order]


def test_other_policy_leaves_it_mounted(daemon, storage, open_upper):
    STICK.plug(storage)
    open_upper()
    daemon.start()
    daemon.change(CARD, False)
    assert daemon.calls() == []


def test_part_of_the_system_stays_mounted(daemon, storage, open_upper):
    Stick(system=True, mounted=False).plug(storage)
    open_upper()
    daemon.start()
    daemon.change(USB, False)
    daemon.change(CARD, False)
    assert daemon.calls() == []


@pytest.mark.parametrize("policy", [CARD, USB])
def test_volume_of_two_buses_obeys_both_policies(daemon, storage, policy):
    card, volume = Stick("card", "sdio", mounted=False), Stick("dm1")
    storage.appear()
    STICK.plug(storage)
    card.plug(storage)
    with device_tree():
        add_device(volume.id, card.id, STICK.id)
        storage.plug(Block(volume.id, system=True))
        volume.mount(storage)
        daemon.start()
        daemon.change(policy, False)
        wait_until(lambda: not volume.is_mounted(storage))
        assert daemon.calls() == [volume.order]
