# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The time of a start, from exec to the name on the bus."""

import statistics

import servers
from processes import run
from servers import ALL, DAEMON, REFERENCE, SERVICES
from table import Table


def _start(programs, kind, keys):
    command = servers.command(programs, kind, keys)
    return float(run(programs / "govd-stopwatch", SERVICES[kind], *command)) / 1000


def _rounds(programs, keys, count):
    times = {}
    for _ in range(count):
        servers.reset()
        for start in ("first start", "later start"):
            for kind in ALL:
                times.setdefault((start, kind), []).append(_start(programs, kind, keys))
    return {which: statistics.median(values) for which, values in times.items()}


def table(programs, keys, scale, directory):
    """First and later starts, in memory and, if there is a directory for it, on a disk."""
    result = Table("Start to name owned in milliseconds", *ALL, "ratio")
    places = [("in memory", None)] + ([("on disk", directory)] if directory else [])
    for place, where in places:
        with servers.storage(where):
            times = _rounds(programs, keys, scale.starts)
        for start in ("first start", "later start"):
            mine, reference = times[start, DAEMON], times[start, REFERENCE]
            result.add(f"{start} {place}", reference, mine, mine / reference)
    return result
