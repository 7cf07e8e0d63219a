# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""How the time of a write grows with keys, listeners, switches, locks and sticks."""

import pathlib
import shutil

import servers
from footprint import library_directory
from latency import Row, collect
from processes import DEVICE, Process, wait_for_name
from servers import DAEMON
from table import Table

SWITCH_PLUGIN = pathlib.Path("/usr/lib64/libpellorapolicy/plugin/libpelloraswitchplugin.so")
SWITCHES = pathlib.Path("/etc/govd/fileswitch.conf")


def _measure(table, name, programs, scale, key="LocationEnabled"):
    """One row: a write of the daemon, started with everything in place."""
    with servers.daemon(programs):
        write, = collect(programs, [Row("write", "write", (DAEMON,), key)], scale)
    table.add(name, write.median(DAEMON))


def _keys(table, programs, scale, least):
    for count in scale.growth(46, 500, 5000):
        servers.reset()
        lines = "".join(f"Unknown{number}Enabled=true\n" for number in range(count - least))
        servers.POLICY_FILE.write_text("[policy]\n" + lines, encoding="utf-8")
        _measure(table, f"{count} keys in the file", programs, scale)


def _subscribers(table, programs, scale):
    for count in scale.growth(1, 10, 100):
        servers.reset()
        with Process([programs / "govd-load", "--subscribers", count], announces=True):
            _measure(table, f"{count} subscribers", programs, scale)


def _switches(table, programs, scale):
    SWITCH_PLUGIN.parent.mkdir(parents=True, exist_ok=True)
    SWITCHES.parent.mkdir(exist_ok=True)
    shutil.copy(programs.parent.parent / "sdk/plugins" / SWITCH_PLUGIN.name, SWITCH_PLUGIN)
    for count in scale.growth(0, 10, 100):
        servers.reset()
        SWITCHES.write_text("".join(f"[switch{number}]\nvalue=true\npolicies=LocationEnabled;\n"
                                    for number in range(count)), encoding="utf-8")
        _measure(table, f"{count} switches that govern the policy", programs, scale)
    SWITCH_PLUGIN.unlink()


def _locks(table, programs, scale):
    directory = library_directory() / "govd"
    for count in scale.growth(0, 10, 100):
        servers.reset()
        directory.mkdir(exist_ok=True)
        for number in range(count):
            shutil.copy(programs / "libgovd-benchmark-lock.so", directory / f"lock{number}.so")
        _measure(table, f"{count} lock plugins that cover the policy", programs, scale)
        shutil.rmtree(directory)


def _sticks(table, programs, scale):
    for count in scale.growth(0, 10, 100):
        servers.reset()
        with Process([DEVICE, count]):
            wait_for_name("org.freedesktop.UDisks2")
            wait_for_name("org.pelloraos.appjaild1")
            _measure(table, f"{count} sticks, storage policy", programs, scale,
                     "UsbStorageEnabled")


def table(programs, keys, scale):
    """All rows, with the configuration in memory."""
    result = Table("Growth: median latency of a write in microseconds", "govd")
    with servers.storage(None):
        _keys(result, programs, scale, len(keys))
        for part in (_subscribers, _switches, _locks, _sticks):
            part(result, programs, scale)
    return result
