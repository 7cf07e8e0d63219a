# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The files that the daemon reads and writes."""

import contextlib
import ctypes
import os
import pathlib
import shutil
import stat
import struct
import subprocess

POLICY_FILE = pathlib.Path("/etc/policy/policy.conf")
SWITCH_FILE = pathlib.Path("/etc/policy/switch.conf")
MARKERS = pathlib.Path("/var/lib/govd")
CAMERA_MARKER = MARKERS / "camera_enabled"
DEVELOPER_SHELL_MARKER = pathlib.Path("/var/lib/devel-su/.disable")


def reset():
    """Restores the files of a fresh installation whose daemon has never run."""
    for path in (POLICY_FILE.parent, MARKERS, DEVELOPER_SHELL_MARKER.parent,
                 pathlib.Path("/run/govd")):
        if path.is_symlink() or not path.is_dir():
            path.unlink(missing_ok=True)
        shutil.rmtree(path, ignore_errors=True)
    POLICY_FILE.parent.mkdir(parents=True)


def write(path, content):
    """Gives a file this content, text or bytes; makes the folders that it needs."""
    path = pathlib.Path(path)
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content.encode() if isinstance(content, str) else content)


def replace(path, content):
    """Replaces a file by a new one with this content, as editors do."""
    draft = f"{path}.draft"
    write(draft, content)
    os.rename(draft, path)


def store(values, path=POLICY_FILE):
    """Writes a key file of policies or switches; a value is True, False, or a text."""
    lines = [f"{key}={text_of(value)}\n" for key, value in values.items()]
    write(path, "[policy]\n" + "".join(lines))


def stored(path=POLICY_FILE):
    """The values in a key file of policies or switches, as text, by key; empty without a file."""
    found, in_group = {}, False
    lines = path.read_text(errors="surrogateescape").split("\n") if path.exists() else []
    for line in lines:
        key, separator, value = line.partition("=")
        if line.startswith("["):
            in_group = line == "[policy]"
        elif in_group and key and separator:
            found[key] = value
    return found


def snapshot(path):
    """What a write of the file changes: its content if it has one, its inode and its time; None
    when there is no file."""
    try:
        status = os.stat(path)
    except FileNotFoundError:
        return None
    content = pathlib.Path(path).read_bytes() if stat.S_ISREG(status.st_mode) else None
    return content, status.st_ino, status.st_mtime_ns


def text_of(value):
    """A value as files, events and log lines have it."""
    return str(value).lower() if isinstance(value, bool) else value


def snapshots():
    """snapshot() of the files that a write of the camera or of its switch changes."""
    return [snapshot(path) for path in (POLICY_FILE, SWITCH_FILE, CAMERA_MARKER)]


@contextlib.contextmanager
def mounted(folder, *arguments):
    """Mounts something over a folder, with these arguments, as long as the context lasts."""
    subprocess.run(["mount", *arguments, folder], check=True)
    try:
        yield
    finally:
        subprocess.run(["umount", "--lazy", folder], check=True)


def read_only(folder):
    """Makes a folder read-only as long as the context lasts."""
    return mounted(folder, "-o", "bind,ro", folder)


def small_disk(folder, size):
    """Mounts an empty disk of `size` bytes over a folder as long as the context lasts."""
    return mounted(folder, "-t", "tmpfs", "-o", f"mode=755,size={size}", "small")


class OpenWatch:
    """Counts how often a file, or a folder itself, has been opened since the watch was made."""
    EVENT = struct.Struct("iIII")  # of inotify; the last number is the length of a name behind it
    IN_OPEN = 0x20

    def __init__(self, path):
        libc = ctypes.CDLL(None)
        self._events = os.fdopen(libc.inotify_init1(os.O_NONBLOCK | os.O_CLOEXEC), "rb", 0)
        assert libc.inotify_add_watch(self._events.fileno(), os.fsencode(path), self.IN_OPEN) > 0
        self._count = 0

    @property
    def count(self):
        """The number by now."""
        while events := self._events.read(4096):
            while events:
                *_, length = self.EVENT.unpack_from(events)
                self._count += length == 0  # the entries of a folder come with their names
                events = events[self.EVENT.size + length:]
        return self._count
