# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A removable drive in the simulated storage service."""

from dataclasses import dataclass

from testbed.services.storage import FILESYSTEM, Block, Drive, Storage, object_path


@dataclass(frozen=True)
class Stick:
    """A drive with one block device on it."""
    id: str = "stick"  # of the block device
    bus: str | None = "usb"  # how the drive is connected; None without a drive
    system: bool = False
    mounted: bool = True  # whether it is mounted when it is plugged in
    partition_table: bool = False

    @property
    def path(self):
        """Object path of the block device."""
        return object_path("block_devices", self.id)

    @property
    def mount_point(self):
        """The place where it is mounted."""
        return f"/run/media/{self.id}"

    @property
    def order(self):
        """The daemon's order to unmount it, as Daemon.calls() has it: without any option."""
        return (Storage.NAME, self.path, FILESYSTEM, "Unmount", "a{sv}", {})

    def plug(self, storage):
        """Plugs it in."""
        drive = "/" if self.bus is None else storage.plug(Drive(f"drive_of_{self.id}", self.bus))
        storage.plug(Block(self.id, drive, self.system, partition_table=self.partition_table,
                           mount_points=(self.mount_point,) if self.mounted else ()))

    def mount(self, storage):
        """Mounts it; it is plugged in already."""
        storage.set_mount_points(self.path, self.mount_point)

    def is_mounted(self, storage):
        """Whether it is mounted, by the storage service's state."""
        return bool(storage.places(self.path))
