# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The system log of the tests."""

import os
import re
import socket
import threading
from dataclasses import dataclass

from testbed.waiting import wait_until

PATH = "/dev/log"
MARKER = b"settled"
FORMAT = re.compile(rb"<(\d+)>\w{3} [ \d]\d [\d:]{8} ([^:\[]*)(?:\[\d+\])?: (.*)", re.DOTALL)


@dataclass(frozen=True)
class Record:
    """What a program has handed to syslog(); facility and level are one number."""
    priority: int
    program: str
    text: str


class SystemLog:
    """Listens at /dev/log, in a thread of its own: a log that nobody reads holds up who writes."""

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
        """What has been recorded by now, but for the first ones."""
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


def record_of(datagram):
    """A datagram of syslog() in its parts."""
    if match := FORMAT.fullmatch(datagram):
        priority, program, text = match.groups()
        return Record(int(priority), program.decode(), text.decode(errors="replace"))
    return Record(-1, "", datagram.decode(errors="replace"))
