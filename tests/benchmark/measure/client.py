# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""How long the command-line client takes beside as many calls with busctl, starts included."""

import pathlib
import statistics
import tempfile
import time

import servers
from processes import run
from table import Table

POLICY = ("busctl", "--system", "call", "org.kvt.PolicyManager", "/org/kvt/PolicyManager",
          "org.kvt.PolicyManager.Policy")


def _milliseconds(*commands):
    begin = time.monotonic()
    for command in commands:
        run(*command)
    return (time.monotonic() - begin) * 1000


def _reads(keys):
    return [(*POLICY, "KeyValue", "s", key) for key in keys]


def _writes(keys, value):
    return [(*POLICY, "SetKeyValue", "sv", key, "b", value) for key in keys]


def _desired(directory, keys, value):
    file = pathlib.Path(directory, value)
    file.write_text("[policy]\n" + "".join(f"{key}={value}\n" for key in keys), encoding="utf-8")
    return ("govctl", "apply", file)


def _round(keys, on, off):
    """Milliseconds that busctl and the client take, by the name of the row."""
    times = {}
    run(*on)
    # With a policy off whose service is not on the bus, the client would report a failure.
    times["verify"] = _milliseconds(*_reads(keys)), _milliseconds(("govctl", "verify"))
    writes = _milliseconds(*_writes(keys, "false"))
    run(*on)
    times["apply, all changed"] = writes, _milliseconds(off)
    times["apply, nothing to do"] = _milliseconds(*_reads(keys)), _milliseconds(off)
    return times


def table(programs, scale):
    """A file applied, and what is in force looked at."""
    keys = run("govctl", "list", "--keys").split()
    result = Table(f"The client with {len(keys)} policies, in milliseconds",
                   "busctl", "govctl", "/ busctl")
    servers.reset()
    with servers.daemon(programs), tempfile.TemporaryDirectory() as directory:
        on, off = (_desired(directory, keys, value) for value in ("true", "false"))
        rounds = [_round(keys, on, off) for _ in range(scale.rounds)]
    for name in rounds[0]:
        busctl, govctl = map(statistics.median, zip(*(each[name] for each in rounds)))
        result.add(name, busctl, govctl, govctl / busctl)
    return result
