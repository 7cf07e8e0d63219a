# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The storage service sends invalid data; the library uses the valid parts of it."""

import dbus
import pytest

from testbed.partitions import (BLOCK_PATH, EXTERNAL, MOUNTED, PLACE, STICK_PATH, SYSTEM, UNMOUNTED,
                                block, calls_of, plug_stick)
from testbed.services.service import PROPERTIES, answer
from testbed.services.storage import (BLOCK, DRIVE, FILESYSTEM, OBJECT_MANAGER, ROOT, file_name,
                                      mount_points)
from testbed.waiting import wait_until

ADDED, REMOVED, CHANGED = "InterfacesAdded", "InterfacesRemoved", "PropertiesChanged"
OTHER_PATH = f"{BLOCK_PATH}_other"
BYTES, TEXTS = dbus.ByteArray(b"/mnt"), dbus.Array(["/mnt"], signature="s")
MOUNT = {"MountPoints": dbus.Array([BYTES], signature="ay")}
NEWS = {FILESYSTEM: dbus.Dictionary(MOUNT, signature="sv")}

PROPERTIES_OF = {BLOCK: ["Device", "Drive", "HintSystem"], FILESYSTEM: ["MountPoints"],
                 DRIVE: ["ConnectionBus", "Vendor", "Model", "Removable"]}
BAD_VALUES = {
    "missing": None,
    "number": dbus.Int32(42),
    "text list": dbus.Array(["text"], signature="s"),
    "map": dbus.Dictionary({"a": dbus.Dictionary({}, signature="sv")}, signature="sv"),
    "objects": dbus.Dictionary({dbus.ObjectPath("/a"): {}}, signature="oa{sa{sv}}"),
    "signature": dbus.Signature("s")}
each_property = pytest.mark.parametrize("interface, name", [
    (interface, name) for interface, names in PROPERTIES_OF.items() for name in names])
each_bad_value = pytest.mark.parametrize("value", BAD_VALUES.values(), ids=BAD_VALUES)


@pytest.mark.parametrize("fault", [
    answer(""), answer("i", 42), answer("s", "text"), answer("a{sv}", {"a": 1}),
    answer("a{sa{sv}}", {BLOCK: {}}), answer("a{oa{sa{sv}}}s", {}, "text")],
    ids=["nothing", "number", "text", "map", "one object's interfaces", "one value too many"])
def test_listing(present, partitions, fault):
    present.plug(block(PLACE))
    present.fail(fault)
    partitions.make_application()
    assert partitions.list() == []
    partitions.run()
    partitions.settle(present)
    assert partitions.announced() == []


def listing():
    """All objects of a service with one stick."""
    return {STICK_PATH: {DRIVE: {"ConnectionBus": "usb", "Vendor": "Maker", "Model": "Model",
                                 "Removable": True}},
            BLOCK_PATH: {BLOCK: {"Device": file_name("/dev/sda1"),
                                 "Drive": dbus.ObjectPath(STICK_PATH), "HintSystem": True},
                         FILESYSTEM: {"MountPoints": mount_points(["/mnt"])}}}


@each_bad_value
@each_property
def test_property_in_the_listing(present, partitions, interface, name, value):
    """All properties but the invalid one are used."""
    objects = listing()
    properties = objects[STICK_PATH if interface == DRIVE else BLOCK_PATH][interface]
    if value is None:
        del properties[name]
    else:
        properties[name] = value
    present.fail(answer("a{oa{sa{sv}}}", objects))
    partitions.run(BLOCK_PATH)
    found = partitions.only()
    assert found["device"] == ("" if name == "Device" else "/dev/sda1")
    assert found["type"] == (EXTERNAL if name == "HintSystem" else SYSTEM)
    assert found["status"] == (UNMOUNTED if name == "MountPoints" else MOUNTED)
    drive, is_lost = found["drive"], name == "Drive"
    assert ("connectionBus" in drive) == (not is_lost and name != "ConnectionBus")
    assert drive.get("vendor", "") == ("" if is_lost or name == "Vendor" else "Maker")
    assert drive.get("model", "") == ("" if is_lost or name == "Model" else "Model")
    assert drive.get("removable", False) is (not is_lost and name != "Removable")


@each_bad_value
@each_property
def test_property_that_changes(present, partitions, interface, name, value):
    """The known value stays as it was."""
    plug_stick(present, PLACE)
    partitions.run(BLOCK_PATH)
    known = partitions.only()
    present.signal(STICK_PATH if interface == DRIVE else BLOCK_PATH, PROPERTIES, CHANGED,
                   "sa{sv}as", interface, {} if value is None else {name: value}, [])
    partitions.settle(present)
    assert partitions.paths() == [BLOCK_PATH]
    assert partitions.only() == known


@pytest.mark.parametrize("path, interface, member, signature, arguments", [
    (ROOT, OBJECT_MANAGER, ADDED, "", ()),
    (ROOT, OBJECT_MANAGER, ADDED, "o", (BLOCK_PATH,)),
    (ROOT, OBJECT_MANAGER, ADDED, "sa{sa{sv}}", (BLOCK_PATH, NEWS)),
    (ROOT, OBJECT_MANAGER, ADDED, "oas", (BLOCK_PATH, [FILESYSTEM])),
    (ROOT, OBJECT_MANAGER, ADDED, "oa{sa{sv}}i", (BLOCK_PATH, NEWS, 1)),
    (ROOT, OBJECT_MANAGER, REMOVED, "", ()),
    (ROOT, OBJECT_MANAGER, REMOVED, "sas", (BLOCK_PATH, [FILESYSTEM])),
    (ROOT, OBJECT_MANAGER, REMOVED, "os", (BLOCK_PATH, FILESYSTEM)),
    (ROOT, OBJECT_MANAGER, REMOVED, "oas", (BLOCK_PATH, [])),
    (ROOT, OBJECT_MANAGER, REMOVED, "oas", (BLOCK_PATH, ["a.b"])),
    (ROOT, OBJECT_MANAGER, REMOVED, "oas", (OTHER_PATH, [FILESYSTEM])),
    (BLOCK_PATH, PROPERTIES, CHANGED, "", ()),
    (BLOCK_PATH, PROPERTIES, CHANGED, "sa{sv}", (FILESYSTEM, MOUNT)),
    (BLOCK_PATH, PROPERTIES, CHANGED, "sa{sv}s", (FILESYSTEM, MOUNT, "MountPoints")),
    (BLOCK_PATH, PROPERTIES, CHANGED, "ssas", (FILESYSTEM, "MountPoints", [])),
    (BLOCK_PATH, PROPERTIES, CHANGED, "sa{sv}as", (FILESYSTEM, {"MountPoints": TEXTS}, [])),
    (BLOCK_PATH, PROPERTIES, CHANGED, "sa{sv}as", (FILESYSTEM, {"MountPoints": BYTES}, [])),
    (BLOCK_PATH, PROPERTIES, CHANGED, "sa{sv}as", (BLOCK, MOUNT, [])),
    (BLOCK_PATH, PROPERTIES, CHANGED, "sa{sv}as", ("a.b", MOUNT, [])),
    (OTHER_PATH, PROPERTIES, CHANGED, "sa{sv}as", (FILESYSTEM, MOUNT, [])),
    (OTHER_PATH, PROPERTIES, CHANGED, "sa{sv}as", (FILESYSTEM, {}, ["MountPoints"])),
    (BLOCK_PATH, PROPERTIES, CHANGED, "sa{sv}as", (FILESYSTEM, {}, ["Size"]))])
def test_signal(present, partitions, path, interface, member, signature, arguments):
    present.plug(block())
    partitions.run(BLOCK_PATH)
    present.signal(path, interface, member, signature, *arguments)
    partitions.settle(present)
    assert partitions.paths() == [BLOCK_PATH]
    assert partitions.status() == UNMOUNTED
    assert len(present.calls) == 1


@pytest.mark.parametrize("fault", [
    answer(""), answer("aay", [BYTES]), answer("v", "/mnt"), answer("v", TEXTS)],
    ids=["nothing", "bare list", "text", "texts"])
def test_answer_about_mount_points(present, partitions, fault):
    present.plug(block())
    partitions.run(BLOCK_PATH)
    present.fail(fault, "Get")
    present.tells = False
    present.set_mount_points(BLOCK_PATH, PLACE)
    wait_until(lambda: len(calls_of(present, "Get")) == 1)
    present.mend()
    present.set_mount_points(BLOCK_PATH, PLACE)
    partitions.wait_for(BLOCK_PATH, BLOCK_PATH)
    partitions.settle(present)
    assert partitions.paths() == [BLOCK_PATH, BLOCK_PATH]
