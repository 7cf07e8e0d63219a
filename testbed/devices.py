# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Block devices of the kernel, and directories in the form in which it tells their order."""

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
        # A file of the sandbox's own: one that is mounted from elsewhere would be what the storage
        # service unmounts.
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
        """Mounts it. Raises CalledProcessError when the kernel does not."""
        os.makedirs(MOUNT_POINT, exist_ok=True)
        subprocess.run(["mount", "-t", "ext4", self.node, MOUNT_POINT], check=True)

    @staticmethod
    def mount_again(place):
        """Shows what is mounted in another place as well, which may be the same."""
        os.makedirs(place, exist_ok=True)
        subprocess.run(["mount", "--bind", MOUNT_POINT, place], check=True)

    def places(self):
        """Every place where it is mounted, as the kernel's table has it."""
        mounts = [line.split() for line in open("/proc/self/mountinfo", encoding="utf-8")]
        return [fields[4] for fields in mounts if fields[2] == self._number]


class LoopDevice(BlockDevice):
    """A block device that the kernel makes of a file, which may be a device. A context that takes
    it away; the kernel does so itself should the test be killed."""

    def __init__(self, file):
        self._file = wait_until(lambda: self._attach(file))

    def __exit__(self, *arguments):
        super().__exit__(*arguments)
        self._file.close()

    def let_go(self):
        """Has the kernel take it away with its last mount."""
        self._file.close()

    @property
    def exists(self):
        """Whether the kernel has not taken it away."""
        return (KERNEL / self.name / "loop").exists()

    def _attach(self, file):
        """Becomes a free device; the open file that keeps it. None when somebody else has taken
        that device first."""
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
        """Makes a partition; the kernel is told, and need not understand a partition table."""
        start, length = PARTITIONS[number - 1]
        partition = ctypes.create_string_buffer(
            struct.pack("<qqi", start, length, number), BLKPG_PARTITION_SIZE)
        fcntl.ioctl(self._file, BLKPG, struct.pack(
            "iiiP", BLKPG_ADD_PARTITION, 0, BLKPG_PARTITION_SIZE, ctypes.addressof(partition)))
        return BlockDevice(f"{self.name}p{number}")


def free_loop_device():
    """The number of a loop device that nobody uses at this moment."""
    # Opening the file brings the kernel's module; where nobody has made the file, it is made here.
    if not os.path.exists(LOOP_CONTROL):
        os.mknod(LOOP_CONTROL, stat.S_IFCHR | 0o600, LOOP_CONTROL_NUMBER)
    with open(LOOP_CONTROL, "r+b", buffering=0) as control:
        return fcntl.ioctl(control, LOOP_CTL_GET_FREE)


def disk_image(*file_systems):
    """Makes a disk with ext4 file systems, each at a start and of a length, or with one that takes
    the whole; the name of the file."""
    # The device that was made of the file before may not have let go of it yet.
    pathlib.Path(IMAGE).unlink(missing_ok=True)
    with open(IMAGE, "wb") as image:
        image.truncate(8 * MEBIBYTE)
    for start, length in file_systems or [(0, 8 * MEBIBYTE)]:
        subprocess.run(["mkfs.ext4", "-q", "-F", "-E", f"offset={start}", IMAGE,
                        f"{length // 1024}k"], check=True)
    return IMAGE


@contextlib.contextmanager
def upper_device(lower, is_told=True):
    """A block device that is built on another one, as the kernel's device mapper makes a logical
    volume or the content of an encrypted device, on machines that have no device mapper.

    It is a loop device made of the other one. The link by which the kernel tells what a device is
    built on is made here, in the kernel's place, if it is to be told.
    """
    with LoopDevice(lower.node) as upper, hidden(KERNEL / upper.name / "slaves") as slaves:
        if is_told:
            (slaves / lower.name).symlink_to(f"../../{lower.name}")
        yield upper


@contextlib.contextmanager
def device_tree():
    """Block devices of the test's own, told of by add_device() and add_partition(), instead of
    those of the machine. It takes the place of the kernel's device mapper, too."""
    with hidden(KERNEL):
        yield


def add_device(name, *below):
    """Adds a device of this name of the kernel's, built on others, to a device tree."""
    slaves = KERNEL / name / "slaves"
    slaves.mkdir(parents=True)
    for device in below:
        (slaves / device).symlink_to(f"../../{device}")


def add_partition(name, whole):
    """Adds a partition of a device that has been added."""
    (KERNEL / whole / name).mkdir()
    (KERNEL / name).symlink_to(f"{whole}/{name}")


@contextlib.contextmanager
def hidden(directory):
    """An empty directory in the place of this one, as long as the context lasts."""
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=755,size=1M", "test", directory],
                   check=True)
    try:
        yield directory
    finally:
        subprocess.run(["umount", "--lazy", directory], check=True)
