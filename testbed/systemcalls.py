# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""System calls of a process: seen, made to fail, and places to kill it at."""

import collections
import os
import signal
import subprocess
import tempfile
from dataclasses import dataclass

from testbed.waiting import PATIENCE


def failing(call, number, error, path=None):
    """Options of strace that make calls fail; `number` says which of them, as in "2" or "2+", of
    those that concern `path` or of all."""
    concerned = ["-P", path] if path else []
    return ["-e", f"trace={call}", "-e", f"inject={call}:error={error}:when={number}", *concerned]


def traced(*options, output=os.devnull):
    """The command that runs a program with options of strace from its first call on."""
    return ["strace", "-o", output, *options]


class SystemCalls:
    """Sees the system calls that the main thread of a running process makes. Options are those of
    strace that say which are seen and what happens to them; they count calls from here on."""

    def __init__(self, pid, *options):
        self._output = tempfile.NamedTemporaryFile("r")
        self._tracer = subprocess.Popen(
            ["strace", "-y", "-o", self._output.name, "-p", f"{pid}", *options],
            stderr=subprocess.PIPE)
        first = self._tracer.stderr.readline()  # strace says that it has attached, or why not
        assert self._tracer.poll() is None and f"{pid}".encode() in first, first

    def end(self):
        """Lets the process alone again, if it still is there, and returns its calls."""
        self._tracer.send_signal(signal.SIGTERM)
        self._finish()
        with self._output:
            return self._output.read().split("\n")

    def drop(self):
        """Lets a process alone that is dying: strace waits for ever, now and then, for threads that
        it has killed itself, and keeps them from being gone."""
        self._tracer.kill()
        self._finish()
        self._output.close()

    def _finish(self):
        self._tracer.wait(PATIENCE)
        self._tracer.stderr.close()


def number_of(name, text, calls):
    """The number, among those of its name, of the first call that holds a text; 0 for none."""
    lines = [line for line in calls if line.startswith(f"{name}(")]
    return next((number for number, line in enumerate(lines, 1) if text in line), 0)


def injected(calls):
    """The calls to which something was done."""
    return [line for line in calls if "(INJECTED)" in line]


@dataclass(frozen=True)
class Place:
    """A place in the life of a process: before the call `number` of those called `name`."""
    name: str
    number: int

    def killing(self):
        """Options of strace that kill the process there."""
        return ["-e", f"inject={self.name}:signal=KILL:when={self.number}"]


def places(calls, everywhere):
    """The places around calls that concern /etc/policy, or all."""
    found, numbers, was_near = [], collections.Counter(), False
    for call in calls:
        name, separator, _ = call.partition("(")
        if not separator or call.startswith("<"):
            continue
        numbers[name] += 1
        is_near = "/etc/policy" in call
        if everywhere or is_near or was_near:
            found.append(Place(name, numbers[name]))
        was_near = is_near
    return found
