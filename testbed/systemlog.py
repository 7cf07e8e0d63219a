# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The system log of the tests."""

import contextlib
import os
import pathlib
import re
import socket
import threading
from dataclasses import dataclass

from testbed.waiting import wait_until

PATH = "/dev/log"
ASIDE = PATH + ".aside"
FILLER = b"full"
MARKER = b"settled"
FORMAT = re.compile(rb"<(\d+)>\w{3} [ \d]\d [\d:]{8} ([^:\[]*)(?:\[\d+\])?: (.*)", re.DOTALL)


@dataclass(frozen=True)
class Record:
    """One message of syslog(); `priority` is facility and level."""
    priority: int
    program: str
    text: str


class SystemLog:
    """Reads /dev/log in a thread of its own: an unread log would block its writers."""

    def __init__(self):
        if os.path.lexists(PATH):
            os.unlink(PATH)
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._socket.bind(PATH)
        os.chmod(PATH, 0o666)
        self._records = []
        self._settled = 0
        self._markers = 0
        threading.Thread(target=self._read, daemon=True).start()

    def records(self, since=0):
        """The records so far, without the first ones."""
        self._markers += 1
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as sender:
            sender.sendto(MARKER, PATH)
        wait_until(lambda: self._settled == self._markers)
        return self._records[since:]

    def _read(self):
        while True:
            datagram = self._socket.recv(1 << 16)
            if datagram == MARKER:
                self._settled += 1
            else:
                self._records.append(record_of(datagram))


class FullSystemLog:
    """A system log whose queue is full: a writer blocks until take(). A context in which it
    replaces the other log."""

    def __enter__(self):
        os.rename(PATH, ASIDE)
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._socket.bind(PATH)
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as sender:
            sender.setblocking(False)
            with contextlib.suppress(BlockingIOError):
                while True:
                    sender.sendto(FILLER, PATH)
        return self

    def __exit__(self, *_):
        self._socket.close()
        os.rename(ASIDE, PATH)

    @staticmethod
    def wait_for_writer(pid):
        """Waits until the main thread of a process blocks in a write to the log."""
        def writes():
            # The number of the system call in which the thread blocks, and its first argument.
            call = pathlib.Path(f"/proc/{pid}/syscall").read_text().split()
            descriptor = f"/proc/{pid}/fd/{int(call[1], 16)}" if len(call) > 1 else ""
            return os.path.exists(descriptor) and os.readlink(descriptor).startswith("socket:")
        wait_until(writes)

    def take(self):
        """Makes room in the queue and returns the first line that has waited for it."""
        while (line := self._socket.recv(1 << 16)) == FILLER:
            pass
        return record_of(line)


def record_of(datagram):
    """A datagram of syslog() in its parts."""
    if match := FORMAT.fullmatch(datagram):
        priority, program, text = match.groups()
        return Record(int(priority), program.decode(), text.decode(errors="replace"))
    return Record(-1, "", datagram.decode(errors="replace"))
