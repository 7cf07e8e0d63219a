# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Invalid data of the storage service, or of another sender; later valid data is used."""

import dbus
import pytest

from testbed.services.service import ERROR, SILENCE, answer
from testbed.services.storage import (BLOCK, FILESYSTEM, OBJECT_MANAGER, ROOT, file_name,
                                      mount_points)
from testbed.stick import Stick

CARD, USB = "MemoryCardEnabled", "UsbStorageEnabled"
STICK, ODD = Stick(), Stick("odd")
ADDED, REMOVED = "InterfacesAdded", "InterfacesRemoved"


def odd_block(interface=None, name=None, value=None):
    """What a made-up block device called "odd" tells of itself: all is as it should be but one
    property, which has another value, or is missing with None."""
    values = {BLOCK: {"Device": file_name("/dev/odd"), "Drive": dbus.ObjectPath("/"),
                      "HintSystem": dbus.Boolean(False)},
              FILESYSTEM: {"MountPoints": mount_points([ODD.mount_point])}}
    if value is not None:
        values[interface][name] = value
    elif name:
        del values[interface][name]
    return {name: dbus.Dictionary(properties, signature="sv")
            for name, properties in values.items()}


@pytest.mark.parametrize("fault", [
    answer("i", 7), answer("b", False), answer("as", ["a", "b"]), ERROR, answer("")],
    ids=["a number", "false", "a list", "error", "nothing"])
def test_listing_that_fails(daemon, storage, fault):
    storage.fail(fault, "GetManagedObjects")
    STICK.plug(storage)
    storage.appear()
    daemon.start_observed()
    daemon.change(USB, False)
    assert daemon.calls(storage.NAME) == []
    later = Stick("later")
    later.plug(storage)
    assert daemon.calls(storage.NAME) == [later.order]
    assert [line for line in daemon.logged() if "orage" in line] == []


@pytest.mark.parametrize("interface, name, value, unmounted", [
    (BLOCK, "HintSystem", dbus.Boolean(False), True),
    (BLOCK, "HintSystem", None, True),
    (BLOCK, "HintSystem", dbus.String("true"), True),
    (BLOCK, "HintSystem", dbus.Int32(1), True),
    (BLOCK, "Drive", None, True),
    (BLOCK, "Drive", dbus.String("/x"), True),
    (BLOCK, "Device", None, True),
    (BLOCK, "Device", dbus.Int32(7), True),
    (FILESYSTEM, "MountPoints", None, False),
    (FILESYSTEM, "MountPoints", dbus.String("/mnt"), False),
    (FILESYSTEM, "MountPoints", dbus.Array(["/mnt"], signature="s"), False),
    (FILESYSTEM, "MountPoints", file_name("/mnt"), False)])
def test_odd_property_is_taken_as_missing(daemon, storage, interface, name, value, unmounted):
    storage.appear()
    storage.fail(SILENCE, "Unmount")  # there is no such device to unmount
    daemon.start()
    daemon.change(CARD, False)
    daemon.forget()
    storage.signal(ROOT, OBJECT_MANAGER, ADDED, "oa{sa{sv}}", ODD.path,
                   odd_block(interface, name, value))
    assert daemon.calls() == ([ODD.order] if unmounted else [])
    assert daemon.logged() == []


@pytest.mark.parametrize("member, signature, arguments", [
    (ADDED, "", ()),
    (ADDED, "i", (7,)),
    (ADDED, "sa{sa{sv}}", ("/x", odd_block())),
    (ADDED, "oa{sa{sv}}i", ("/x", odd_block(), 7)),
    (REMOVED, "", ()),
    (REMOVED, "s", ("/x",)),
    (REMOVED, "oas", ("/x", [BLOCK]))])
def test_odd_signal_is_ignored(daemon, storage, member, signature, arguments):
    storage.appear()
    daemon.start()
    daemon.change(CARD, False)
    daemon.change(USB, False)
    daemon.forget()
    storage.signal(ROOT, OBJECT_MANAGER, member, signature, *arguments)
    assert daemon.calls() == []
    STICK.plug(storage)
    assert daemon.calls() == [STICK.order]
    assert daemon.logged() == []


def test_signal_of_another_service_is_ignored(daemon, storage, audio_policy):
    """Any client may send a signal that looks like one of the storage service."""
    storage.appear()
    audio_policy.appear()
    daemon.start()
    daemon.change(CARD, False)
    daemon.forget()
    audio_policy.signal(ROOT, OBJECT_MANAGER, ADDED, "oa{sa{sv}}", "/x", odd_block())
    assert daemon.calls() == []
