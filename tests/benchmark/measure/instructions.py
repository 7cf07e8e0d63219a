# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The instructions that a server executes and its allocations, counted by valgrind.

Unlike times, counts hardly depend on the machine. The fixed cost, such as the client's connection,
is removed by making N calls and then 3 N: half of the difference is the cost of N calls.
"""

import contextlib
import pathlib
import re
import tempfile

import servers
from processes import Process, load, run, wait_for_name
from servers import SERVICES

ALLOCATORS = ("malloc", "calloc", "realloc")


class Counts:
    """Instructions, and calls of functions that allocate memory, of one profile."""

    def __init__(self, instructions=0, allocations=0):
        self.instructions = instructions
        self.allocations = allocations

    @classmethod
    def of_profile(cls, path):
        """Reads a file that callgrind has written."""
        counts = cls()
        names = {}
        callee = None
        for line in path.read_text(encoding="utf-8", errors="replace").splitlines():
            if (found := re.match(r"c?fn=(\(\d+\))(?: (.*))?", line)):
                name = names.setdefault(found[1], found[2])
                callee = name if line.startswith("cfn=") else callee
            elif line.startswith("calls=") and callee in ALLOCATORS:
                counts.allocations += int(line[len("calls="):].split()[0])
            elif line.startswith(("summary:", "totals:")):
                counts.instructions = int(line.split()[1])
        return counts

    def per_call(self, more, calls):
        """What one call costs when @p more has made so many calls more than this one."""
        return Counts(round((more.instructions - self.instructions) / calls),
                      round((more.allocations - self.allocations) / calls))


class Profiler:
    """A server under callgrind."""

    def __init__(self, programs, kind, keys=()):
        self._programs = programs
        self._service = SERVICES[kind]
        self._command = servers.command(programs, kind, keys)

    @contextlib.contextmanager
    def running(self):
        """Runs the server; the counts are those of this time."""
        with tempfile.TemporaryDirectory() as directory:
            self._output = pathlib.Path(directory) / "profile"
            command = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={self._output}",
                       *self._command]
            with Process(command, {"QT_HASH_SEED": "0"}) as process:
                self._pid = process.pid
                self._dumps = 0
                wait_for_name(self._service)
                yield self

    def start(self):
        """The counts of a start: from exec to a server that is on the bus and at rest."""
        with self.running():
            # The server answers in order: a reply means that all before it is done.
            load(self._programs, "read", 1, self._service, warm_up=0)
            return self._dump()

    def call(self, operation, calls, **options):
        """The counts of one call."""
        load(self._programs, operation, 20, self._service, warm_up=0, **options)
        self._dump()
        load(self._programs, operation, calls, self._service, warm_up=0, **options)
        few = self._dump()
        load(self._programs, operation, 3 * calls, self._service, warm_up=0, **options)
        return few.per_call(self._dump(), 2 * calls)

    def _dump(self):
        run("callgrind_control", "--dump", self._pid)
        self._dumps += 1
        return Counts.of_profile(self._output.with_name(f"profile.{self._dumps}"))
