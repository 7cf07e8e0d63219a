# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Traces the system calls of a process, makes them fail, and kills the process at one of them."""

import collections
import os
import platform
import signal
import subprocess
import tempfile
from dataclasses import dataclass

from testbed.waiting import PATIENCE

# The system call by which the C library describes an open file.
FSTAT = "fstat" if platform.libc_ver() >= ("glibc", "2.39") else "newfstatat"


def failing(call, number, error, path=None):
    """Options of strace that make calls fail. `number` selects them, as in "2" or "2+", among those
    that concern `path`, or among all."""
    concerned = ["-P", path] if path else []
    return ["-e", f"trace={call}", "-e", f"inject={call}:error={error}:when={number}", *concerned]


def traced(*options, output=os.devnull):
    """The command that runs a program under strace with these options from its first call on."""
    return ["strace", "-o", output, *options]


class SystemCalls:
    """Traces the system calls of the main thread of a running process. The options of strace select
    them and inject faults; their numbers count calls from here on."""

    def __init__(self, pid, *options):
        self._output = tempfile.NamedTemporaryFile("r")
        self._tracer = subprocess.Popen(
            ["strace", "-y", "-o", self._output.name, "-p", f"{pid}", *options],
            stderr=subprocess.PIPE)
        first = self._tracer.stderr.readline()  # strace writes that it has attached, or why not
        assert self._tracer.poll() is None and f"{pid}".encode() in first, first

    def end(self):
        """Detaches from the process, if it still runs, and returns its calls."""
        self._tracer.send_signal(signal.SIGTERM)
        self._finish()
        with self._output:
            return self._output.read().split("\n")

    def drop(self):
        """Ends strace after it has killed the process: it can wait for the killed threads without
        end, and the process does not end before strace."""
        self._tracer.kill()
        self._finish()
        self._output.close()

    def _finish(self):
        self._tracer.wait(PATIENCE)
        self._tracer.stderr.close()


def number_of(name, text, calls):
    """The number of the first call that holds a text, among the calls of its name; 0 for none."""
    lines = [line for line in calls if line.startswith(f"{name}(")]
    return next((number for number, line in enumerate(lines, 1) if text in line), 0)


def injected(calls):
    """The calls into which strace has injected a fault."""
    return [line for line in calls if "(INJECTED)" in line]


@dataclass(frozen=True)
class Place:
    """A place in the run of a process: before its system call `number` of those called `name`."""
    name: str
    number: int

    def killing(self):
        """Options of strace that kill the process there."""
        return ["-e", f"inject={self.name}:signal=KILL:when={self.number}"]


def places(calls, everywhere):
    """The places before and after the calls that concern /etc/policy, or before and after all."""
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
