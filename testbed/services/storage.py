# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Drives and block devices as the storage service UDisks2 shows them."""

import os
from dataclasses import dataclass

import dbus

from testbed.services.service import PROPERTIES, Refusal, Service, on_loop

ROOT = "/org/freedesktop/UDisks2"
DRIVE = "org.freedesktop.UDisks2.Drive"
BLOCK = "org.freedesktop.UDisks2.Block"
FILESYSTEM = "org.freedesktop.UDisks2.Filesystem"
PARTITION_TABLE = "org.freedesktop.UDisks2.PartitionTable"
OBJECT_MANAGER = "org.freedesktop.DBus.ObjectManager"


@dataclass
class Drive:
    """A drive; `id` is the last part of its object path."""
    id: str
    bus: str = ""  # how it is connected: "usb", "sdio", ...
    vendor: str = ""
    model: str = ""
    removable: bool = True


@dataclass
class Block:
    """A block device; `id` is the last part of its device file and of its object path."""
    id: str
    drive: str = "/"  # object path of its drive
    system: bool = False
    filesystem: bool = True
    partition_table: bool = False
    mount_points: tuple = ()
    label: str = ""  # of its file system; where it is mounted is called after it
    backing: str = "/"  # object path of the device whose decrypted content it is


class Storage(Service):
    """What is plugged in, pulled out, mounted and unmounted is told on the bus.

    `tells` says whether changed mount points are told with their value, or only that they have
    changed; `mounts_at_once` whether a file system is mounted when it is plugged in, as a desktop
    does it.
    """
    NAME = "org.freedesktop.UDisks2"

    def __init__(self):
        super().__init__()
        self.drives = {}  # by object path
        self.blocks = {}
        self.tells = True
        self.mounts_at_once = False

    def create(self):
        self.add_object(ROOT, OBJECT_MANAGER, is_object_manager=True)
        for path in self.drives:
            self._add_drive(path)
        for path in self.blocks:
            self._add_block(path)

    @on_loop
    def plug(self, thing):
        """Plugs a drive or a block device in, whose drive need not be there; its object path."""
        if isinstance(thing, Drive):
            path = object_path("drives", thing.id)
            self.drives[path] = thing
        else:
            path = object_path("block_devices", thing.id)
            self.blocks[path] = thing
        if self.present:
            self._add_drive(path) if isinstance(thing, Drive) else self._add_block(path)
            self._tell_added(path, list(self.object(path).props))
        self.changed()
        if self.mounts_at_once and getattr(thing, "filesystem", False):
            self._mount(path)
        return path

    @on_loop
    def unplug(self, path):
        """Pulls out the drive or block device at this object path."""
        self.drives.pop(path, None)
        self.blocks.pop(path, None)
        if self.present:
            interfaces = list(self.object(path).props)
            self.remove_object(path)
            self._tell_removed(path, interfaces)
        self.changed()

    @on_loop
    def set_filesystem(self, path, has_filesystem):
        """Makes a file system on a block device, or wipes it."""
        self.blocks[path].filesystem = has_filesystem
        if has_filesystem:
            self._add_filesystem(path)
            self._tell_added(path, [FILESYSTEM])
        else:
            self.blocks[path].mount_points = ()
            del self.object(path).props[FILESYSTEM], self.object(path).methods[FILESYSTEM]
            self._tell_removed(path, [FILESYSTEM])
        self.changed()

    @on_loop
    def places(self, path):
        """Where a block device is mounted, after every call that has been begun."""
        return self.blocks[path].mount_points

    @on_loop
    def set_mount_points(self, path, *places):
        """Mounts a block device in these places; with none, unmounts it. A place that is there
        twice is told once."""
        self.blocks[path].mount_points = places
        if self.present:
            value = mount_points(places)
            self.object(path).props[FILESYSTEM]["MountPoints"] = value
            known = {"MountPoints": value} if self.tells else {}
            hidden = [] if self.tells else ["MountPoints"]
            self.signal(path, PROPERTIES, "PropertiesChanged", "sa{sv}as", FILESYSTEM,
                        dbus.Dictionary(known, signature="sv"), dbus.Array(hidden, signature="s"))
        self.changed()

    def _add_drive(self, path):
        drive = self.drives[path]
        self.add_object(path, DRIVE).AddProperties(DRIVE, {
            "Id": dbus.String(drive.id), "ConnectionBus": dbus.String(drive.bus),
            "Vendor": dbus.String(drive.vendor), "Model": dbus.String(drive.model),
            "Removable": dbus.Boolean(drive.removable)})

    def _add_block(self, path):
        block = self.blocks[path]
        mock = self.add_object(path, BLOCK)
        mock.AddProperties(BLOCK, {
            "Device": file_name(f"/dev/{block.id}"), "Drive": dbus.ObjectPath(block.drive),
            "CryptoBackingDevice": dbus.ObjectPath(block.backing),
            "HintSystem": dbus.Boolean(block.system), "IdLabel": dbus.String(block.label)})
        if block.partition_table:
            mock.props[PARTITION_TABLE] = {}
        if block.filesystem:
            self._add_filesystem(path)

    def _add_filesystem(self, path):
        value = mount_points(self.blocks[path].mount_points)
        self.object(path).AddProperty(FILESYSTEM, "MountPoints", value)
        self.add_methods(path, FILESYSTEM, [
            ("Mount", "a{sv}", "s", lambda _: self._mount(path)),
            ("Unmount", "a{sv}", "", lambda _: self._unmount(path))])

    def _mount(self, path):
        block = self.blocks[path]
        if block.mount_points:
            raise Refusal(path, "org.freedesktop.UDisks2.Error.AlreadyMounted")
        place = f"/run/media/{block.label or block.id}"
        self.set_mount_points(path, place)
        return place

    def _unmount(self, path):
        places = self.blocks[path].mount_points
        if not places:
            raise Refusal(path, "org.freedesktop.UDisks2.Error.NotMounted")
        left, place = places[:-1], places[-1]
        if place in left:  # there is nothing to tell: it is still mounted where it was
            self.blocks[path].mount_points = left
            self.changed()
        else:
            self.set_mount_points(path, *left)

    def _tell_added(self, path, interfaces):
        props = self.object(path).props
        added = {name: dbus.Dictionary(props[name], signature="sv") for name in interfaces}
        self.signal(ROOT, OBJECT_MANAGER, "InterfacesAdded", "oa{sa{sv}}", path, added)

    def _tell_removed(self, path, interfaces):
        self.signal(ROOT, OBJECT_MANAGER, "InterfacesRemoved", "oas", path, interfaces)


def object_path(folder, name):
    """The path of an object; what a path cannot hold is written as a number."""
    return f"{ROOT}/{folder}/" + "".join(
        chr(byte) if chr(byte).isalnum() and byte < 128 or byte == ord("_") else f"_{byte:02x}"
        for byte in name.encode())


def file_name(name):
    """The name of a file as it goes over the bus: bytes, with a NUL at their end."""
    return dbus.Array([dbus.Byte(byte) for byte in os.fsencode(name) + b"\0"], signature="y")


def mount_points(places):
    """Mount points as they go over the bus."""
    return dbus.Array([file_name(place) for place in dict.fromkeys(places)], signature="ay")
