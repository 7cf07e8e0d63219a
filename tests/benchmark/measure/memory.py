# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The memory of a server, after its start and after many calls."""

import pathlib

import servers
from processes import load
from servers import ALL, SERVICES
from table import Table


def _kilobytes(pid):
    fields = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text(encoding="ascii").splitlines()[1:]
    sizes = {name: int(rest.split()[0]) for name, rest in (line.split(":") for line in fields)}
    return sizes["Pss"], sizes["Rss"], sizes["Anonymous"]


def _work(programs, kind, calls):
    for operation, share in (("read", 0.9), ("write", 0.1)):
        load(programs, operation, int(calls * share), SERVICES[kind])


def table(programs, keys, scale):
    """The memory of each server, which runs alone: a library that two servers map would count half
    for each.

    Only the third figure, anonymous memory, does not depend on other processes. It leaves out
    mapped files.
    """
    result = Table("Memory in KiB: proportional / resident / written by itself", *ALL)
    cells = {}
    with servers.storage(None):
        for kind in ALL:
            servers.reset()
            with servers.server(programs, kind, keys) as process:
                done = 0
                cells[kind] = [_kilobytes(process.pid)]
                for calls in scale.memory:
                    _work(programs, kind, calls - done)
                    done = calls
                    cells[kind].append(_kilobytes(process.pid))
    for index, calls in enumerate((0, *scale.memory)):
        result.add(f"after {calls:,} calls" if calls else "idle",
                   *("{:,} / {:,} / {:,}".format(*cells[kind][index]) for kind in ALL))
    return result
