# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Block devices of the kernel, and directories of the form of /sys/class/block."""

import contextlib
import ctypes
import errno
import fcntl
import os
import pathlib
import stat
import struct
import subprocess

from testbed.services.storage import object_path
from testbed.waiting import wait_until

KERNEL = pathlib.Path("/sys/class/block")
IMAGE = "/run/govd-test-disk"
MOUNT_POINT = "/run/govd-test-mount"
MEBIBYTE = 1024 * 1024
PARTITIONS = ((1 * MEBIBYTE, 3 * MEBIBYTE), (4 * MEBIBYTE, 3 * MEBIBYTE))  # start, length

LOOP_CONTROL, LOOP_CONTROL_NUMBER = "/dev/loop-control", os.makedev(10, 237)
LOOP_CTL_GET_FREE, LOOP_CONFIGURE = 0x4C82, 0x4C0A
LOOP_CONFIG_SIZE = 304
LO_FLAGS_AUTOCLEAR, LO_FLAGS_PARTSCAN = 4, 8
BLKPG, BLKPG_ADD_PARTITION, BLKPG_PARTITION_SIZE = 0x1269, 1, 152


class BlockDevice:
    """The block device that the kernel calls `name`. A context that unmounts it."""

    def __init__(self, name):
        self.name = name
        self.node = f"/dev/{name}"
        self.path = object_path("block_devices", name)
        self._number = (KERNEL / name / "dev").read_text().strip()
        # A node that is a bind mount is replaced: an unmount by its path would unmount the node
        # and not the file system on the device.
        if os.path.ismount(self.node):
            subprocess.run(["umount", "--lazy", self.node], check=True)
        pathlib.Path(self.node).unlink(missing_ok=True)
        os.mknod(self.node, stat.S_IFBLK | 0o600, os.makedev(*map(int, self._number.split(":"))))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for place in self.places():
            subprocess.run(["umount", "--lazy", place], check=True)

    def mount(self):
        """Mounts it. Raises CalledProcessError when mounting fails."""
        os.makedirs(MOUNT_POINT, exist_ok=True)
        subprocess.run(["mount", "-t", "ext4", self.node, MOUNT_POINT], check=True)

    @staticmethod
    def mount_again(place):
        """Mounts it at a second place too (a bind mount), which may be the same one."""
        os.makedirs(place, exist_ok=True)
        subprocess.run(["mount", "--bind", MOUNT_POINT, place], check=True)

    def places(self):
        """Its mount points, from the kernel's mount table."""
        mounts = [line.split() for line in open("/proc/self/mountinfo", encoding="utf-8")]
        return [fields[4] for fields in mounts if fields[2] == self._number]


class LoopDevice(BlockDevice):
    """A loop device on a file, which may be a device. A context that removes it; the kernel removes
    it too when the test is killed."""

    def __init__(self, file):
        self._file = wait_until(lambda: self._attach(file))

    def __exit__(self, *arguments):
        super().__exit__(*arguments)
        self._file.close()

    def let_go(self):
        """Has the kernel remove it when its last mount goes."""
        self._file.close()

    @property
    def exists(self):
        """Whether the kernel still has it."""
        return (KERNEL / self.name / "loop").exists()

    def _attach(self, file):
        """Takes a free loop device. Returns the open file that keeps it, or None when another
        process has taken that device first."""
        super().__init__(f"loop{free_loop_device()}")
        device = open(self.node, "r+b", buffering=0)
        try:
            with open(file, "r+b") as backing:
                config = struct.pack("<I56xI", backing.fileno(),
                                     LO_FLAGS_AUTOCLEAR | LO_FLAGS_PARTSCAN)
                fcntl.ioctl(device, LOOP_CONFIGURE, config.ljust(LOOP_CONFIG_SIZE, b"\0"))
        except OSError as error:
            device.close()
            if error.errno != errno.EBUSY:
                raise
            return None
        return device

    def add_partition(self, number):
        """Adds a partition by an ioctl, so that no partition table is needed."""
        start, length = PARTITIONS[number - 1]
        partition = ctypes.create_string_buffer(
            struct.pack("<qqi", start, length, number), BLKPG_PARTITION_SIZE)
        fcntl.ioctl(self._file, BLKPG, struct.pack(
            "iiiP", BLKPG_ADD_PARTITION, 0, BLKPG_PARTITION_SIZE, ctypes.addressof(partition)))
        return BlockDevice(f"{self.name}p{number}")


def free_loop_device():
    """The number of a loop device that is unused at this moment."""
    # Opening the control file loads the kernel's module. A container may lack the file.
    if not os.path.exists(LOOP_CONTROL):
        os.mknod(LOOP_CONTROL, stat.S_IFCHR | 0o600, LOOP_CONTROL_NUMBER)
    with open(LOOP_CONTROL, "r+b", buffering=0) as control:
        return fcntl.ioctl(control, LOOP_CTL_GET_FREE)


def disk_image(*file_systems):
    """Makes a disk image and returns its path: with one ext4 file system in each partition (start,
    length), or with one for the full disk."""
    # The loop device of an earlier test may still use a file of the same name.
    pathlib.Path(IMAGE).unlink(missing_ok=True)
    with open(IMAGE, "wb") as image:
        image.truncate(8 * MEBIBYTE)
    for start, length in file_systems or [(0, 8 * MEBIBYTE)]:
        subprocess.run(["mkfs.ext4", "-q", "-F", "-E", f"offset={start}", IMAGE,
                        f"{length // 1024}k"], check=True)
    return IMAGE


@contextlib.contextmanager
def upper_device(lower, is_told=True):
    """A block device on another one, like a logical volume or a decrypted device, for machines
    without a device mapper.

    It is a loop device on the other one. The link in /sys that tells on which device it rests is
    made here, if wanted.
    """
    with LoopDevice(lower.node) as upper, hidden(KERNEL / upper.name / "slaves") as slaves:
        if is_told:
            (slaves / lower.name).symlink_to(f"../../{lower.name}")
        yield upper


@contextlib.contextmanager
def device_tree():
    """Replaces the machine's block devices in /sys by those of add_device() and add_partition(), so
    that stacked devices need no device mapper."""
    with hidden(KERNEL):
        yield


def add_device(name, *below):
    """Adds a device with this kernel name, which rests on others, to a device tree."""
    slaves = KERNEL / name / "slaves"
    slaves.mkdir(parents=True)
    for device in below:
        (slaves / device).symlink_to(f"../../{device}")


def add_partition(name, whole):
    """Adds a partition of a device of the tree."""
    (KERNEL / whole / name).mkdir()
    (KERNEL / name).symlink_to(f"{whole}/{name}")


@contextlib.contextmanager
def hidden(directory):
    """Mounts an empty directory over this one, as long as the context lasts."""
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=755,size=1M", "test", directory],
                   check=True)
    try:
        yield directory
    finally:
        subprocess.run(["umount", "--lazy", directory], check=True)
