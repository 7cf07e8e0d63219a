# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""How the time of a read and a write grows with keys, listeners, switches, locks and tasks."""

import contextlib
import pathlib
import shutil

import servers
from footprint import library_directory
from latency import Row, collect
from processes import DEVICE, Process, load, wait_for_name
from servers import DAEMON, MANDATED
from table import Table

SWITCH_PLUGIN = pathlib.Path("/usr/lib64/libpellorapolicy/plugin/libpelloraswitchplugin.so")
SWITCHES = pathlib.Path("/etc/govd/fileswitch.conf")
BOTH = (MANDATED, DAEMON)


def _measure(table, name, programs, keys, scale, kinds, key="LocationEnabled"):
    """One row: a read and a write of the servers, started with everything in place."""
    rows = [Row("read", "read", kinds, key), Row("write", "write", kinds, key)]
    with contextlib.ExitStack() as stack:
        for kind in kinds:
            stack.enter_context(servers.server(programs, kind, keys))
        read, write = collect(programs, rows, scale)
    table.add(name, read.median(MANDATED), read.median(DAEMON), write.median(MANDATED),
              write.median(DAEMON))


def _keys(table, programs, keys, scale):
    for count in scale.growth(46, 500, 5000):
        servers.reset()
        servers.fill(count - len(keys))
        _measure(table, f"{count} keys in the file", programs, keys, scale, BOTH)


def _subscribers(table, programs, keys, scale):
    for count in scale.growth(1, 10, 100):
        servers.reset()
        with Process([programs / "govd-load", "--subscribers", count], announces=True):
            _measure(table, f"{count} subscribers", programs, keys, scale, BOTH)


def _switches(table, programs, keys, scale):
    SWITCH_PLUGIN.parent.mkdir(parents=True, exist_ok=True)
    SWITCHES.parent.mkdir(exist_ok=True)
    shutil.copy(programs.parent.parent / "sdk/plugins" / SWITCH_PLUGIN.name, SWITCH_PLUGIN)
    for count in scale.growth(0, 10, 100):
        servers.reset()
        SWITCHES.write_text("".join(f"[switch{number}]\nvalue=true\npolicies=LocationEnabled;\n"
                                    for number in range(count)), encoding="utf-8")
        _measure(table, f"{count} switches that govern the policy", programs, keys, scale,
                 (DAEMON,))
    SWITCH_PLUGIN.unlink()


def _locks(table, programs, keys, scale):
    directory = library_directory() / "govd"
    for count in scale.growth(0, 10, 100):
        servers.reset()
        directory.mkdir(exist_ok=True)
        for number in range(count):
            shutil.copy(programs / "libgovd-benchmark-lock.so", directory / f"lock{number}.so")
        _measure(table, f"{count} lock plugins that cover the policy", programs, keys, scale,
                 (DAEMON,))
        shutil.rmtree(directory)


def _tasks(table, programs, keys, scale):
    """Each write of a policy whose service is absent adds a task that waits for the service."""
    done = 0
    servers.reset()
    with servers.server(programs, DAEMON, keys):
        for count in scale.growth(0, 1000, 10000):
            load(programs, "write", count - done, key="VoiceCallsEnabled", outstanding=16)
            row = Row("write", "write", (DAEMON,), "VoiceCallsEnabled")
            write, = collect(programs, [row], scale)
            done = count
            table.add(f"{count} or more tasks for an absent service", None, None, None,
                      write.median(DAEMON))


def _sticks(table, programs, keys, scale):
    for count in scale.growth(0, 10, 100):
        servers.reset()
        with Process([DEVICE, count]):
            wait_for_name("org.freedesktop.UDisks2")
            wait_for_name("org.pelloraos.appjaild1")
            _measure(table, f"{count} sticks, storage policy", programs, keys, scale, (DAEMON,),
                     "UsbStorageEnabled")


def table(programs, keys, scale):
    """All rows, with the configuration in memory."""
    result = Table("Growth: median latency in microseconds", "read mandated", "read govd",
                   "write mandated", "write govd")
    with servers.storage(None):
        for part in (_keys, _subscribers, _switches, _locks, _tasks, _sticks):
            part(result, programs, keys, scale)
    return result
