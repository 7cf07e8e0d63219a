# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The number of messages that a server sends and receives, counted by a monitor of the bus."""

import re
import subprocess

from processes import PATIENCE, load, run

CALLS = 10


def _connection(service):
    answer = run("gdbus", "call", "--system", "--dest", "org.freedesktop.DBus", "--object-path",
                 "/org/freedesktop/DBus", "--method", "org.freedesktop.DBus.GetNameOwner", service)
    return re.search(r":[\d.]+", answer)[0]


class Monitor:
    """Records all messages of the bus from its making until it is read."""

    def __init__(self):
        self._process = subprocess.Popen(["stdbuf", "-oL", "dbus-monitor", "--system", "--profile"],
                                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                         text=True)
        # NameLost is the bus's first message to a monitor; from then on it receives everything.
        for line in self._process.stdout:
            if "NameLost" in line:
                break

    def lines(self):
        """All messages before a mark, which this function sends over the bus."""
        run("gdbus", "emit", "--system", "--object-path", "/", "--signal", "org.kvt.Benchmark.Mark")
        lines = []
        for line in self._process.stdout:
            if "org.kvt.Benchmark" in line:
                break
            lines.append(line.split("\t"))
        self._process.terminate()
        self._process.wait(PATIENCE)
        return lines


def per_call(programs, operation, service, **options):
    """Messages from and to the server for one call, the call and its reply included."""
    names = {service, _connection(service)}
    load(programs, operation, 2, service, warm_up=0, **options)
    monitor = Monitor()
    load(programs, operation, CALLS, service, warm_up=0, **options)
    # Sender and receiver are the fourth and fifth field. Signals to everybody have no receiver.
    mine = [line for line in monitor.lines() if names.intersection(line[3:5])]
    return len(mine) / CALLS
