# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Measures the installed daemon beside a reference server; runs in the sandbox.

scripts/bench --help describes it.
"""

import argparse
import dataclasses
import json
import pathlib
import sys

import growth
import latency
import memory
import servers
import startup
from instructions import Profiler
from processes import Failure
from servers import ALL, DAEMON
from table import Table


@dataclasses.dataclass(frozen=True)
class Scale:
    """The amount of measurements."""

    rounds: int
    calls: int
    starts: int
    memory: tuple
    profile: int
    steps: int

    def growth(self, *sizes):
        """The sizes that are measured, of those given."""
        return sizes[:self.steps]


SCALES = {"quick": Scale(1, 20, 1, (100,), 5, 1),
          "normal": Scale(7, 500, 7, (10_000,), 100, 3),
          "full": Scale(15, 1000, 21, (10_000, 1_000_000), 200, 3)}

PROFILED = (("read", "read", {}),
            ("write, no handler", "write", {}),
            ("write of the same value", "unchanged", {}),
            ("write of the camera policy", "write", {"key": "CameraEnabled"}),
            ("write, caller mdm", "write", {"user": "mdm"}),
            ("write, refused", "refused", {"user": "guest"}))


def _counts(programs, keys, scale, kind):
    """Counts of one server by the name of the row."""
    servers.reset()
    profiler = Profiler(programs, kind, keys)
    counts = {name: profiler.start() for name in ("first start", "later start")}
    with profiler.running():
        for name, operation, options in PROFILED:
            counts[name] = profiler.call(operation, scale.profile, **options)
    return counts


def _instructions(programs, keys, scale):
    result = Table("Instructions in user space for each call and start", *ALL,
                   "allocations of govd")
    counts = {kind: _counts(programs, keys, scale, kind) for kind in ALL}
    for name, mine in counts[DAEMON].items():
        result.add(name, *(counts[kind][name].instructions for kind in ALL), mine.allocations)
    return result


def _sections(arguments, keys):
    programs, scale = arguments.programs, SCALES[arguments.scale]
    yield _instructions(programs, keys, scale)
    yield latency.in_memory(programs, keys, scale)
    if arguments.disk:
        yield latency.on_disk(programs, keys, scale, arguments.disk)
    yield startup.table(programs, keys, scale, arguments.disk)
    yield memory.table(programs, keys, scale)
    yield growth.table(programs, keys, scale)


def _parse():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", type=pathlib.Path, required=True)
    parser.add_argument("--scale", choices=SCALES, default="normal")
    parser.add_argument("--disk", type=pathlib.Path)
    parser.add_argument("--json", action="store_true")
    return parser.parse_args()


def _main():
    arguments = _parse()
    tables = []
    for table in _sections(arguments, servers.platform_keys(arguments.programs)):
        tables.append(table.as_data())
        if not arguments.json:
            print(table.as_text(), flush=True)
    if arguments.json:
        print(json.dumps(tables, indent=2))


try:
    _main()
except Failure as failure:
    sys.exit(f"bench: {failure}")
