# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The latency of calls, of the daemon and of the reference server."""

import contextlib
import dataclasses
import statistics

import servers
from processes import DEVICE, Process, load, wait_for_name
from servers import ALL, DAEMON, REFERENCE, SERVICES
from table import Table


@dataclasses.dataclass(frozen=True)
class Row:
    """One kind of call, and the servers that are asked."""

    name: str
    operation: str
    kinds: tuple = ALL
    key: str = "LocationEnabled"
    user: str = "root"


READS = (Row("bus", "id", (DAEMON,)), Row("read", "read"))
WRITES = (Row("write that changes", "write"), Row("write of the same value", "unchanged"))
REFUSED = Row("write, refused", "refused", user="guest")
SERVED = Row("write that calls a service", "write", (DAEMON,), "VoiceCallsEnabled")


class Samples:
    """What each server took for one row, round by round."""

    def __init__(self, row):
        self.row = row
        self.results = {kind: [] for kind in row.kinds}

    def collect(self, programs, calls):
        """One round: every server in turn, so that the machine's load changes for all of them."""
        for kind, results in self.results.items():
            results.append(load(programs, self.row.operation, calls, SERVICES[kind], self.row.key,
                                self.row.user))

    def median(self, kind, value="median"):
        """The median over the rounds; None for a server that was not asked."""
        rounds = self.results.get(kind)
        return statistics.median(entry[value] for entry in rounds) if rounds else None

    def ratio(self):
        """The median over the rounds of the daemon's median over that of the reference."""
        pairs = zip(self.results[DAEMON], self.results.get(REFERENCE, ()))
        ratios = [mine["median"] / other["median"] for mine, other in pairs]
        return statistics.median(ratios) if ratios else None


def collect(programs, rows, scale):
    """The samples of all rows."""
    samples = [Samples(row) for row in rows]
    for _ in range(scale.rounds):
        for sample in samples:
            sample.collect(programs, scale.calls)
    return samples


def _add(table, samples):
    for sample in samples:
        table.add(sample.row.name, *(sample.median(kind) for kind in ALL), sample.ratio(),
                  sample.median(DAEMON, "p99"))


def _table(place):
    return Table(f"Latency in microseconds, configuration {place}", *ALL, "ratio", "p99")


@contextlib.contextmanager
def _all_servers(programs, keys):
    servers.reset()
    with contextlib.ExitStack() as stack:
        for kind in ALL:
            stack.enter_context(servers.server(programs, kind, keys))
        yield


def in_memory(programs, keys, scale):
    """All rows with the configuration in memory."""
    table = _table("in memory")
    with servers.storage(None), _all_servers(programs, keys):
        _add(table, collect(programs, (*READS, *WRITES, REFUSED), scale))
        with Process([DEVICE, 0]):
            wait_for_name("org.pelloraos.appjaild1")
            _add(table, collect(programs, [SERVED], scale))
    return table


def on_disk(programs, keys, scale, directory):
    """Writes with the configuration on a disk."""
    table = _table("on disk")
    with servers.storage(directory), _all_servers(programs, keys):
        _add(table, collect(programs, WRITES, scale))
    return table
