# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The latency of calls, of the daemon and of the reference servers."""

import contextlib
import dataclasses
import pathlib
import statistics

import servers
from processes import DEVICE, Process, load, wait_for_name, wait_for_path
from servers import ALL, BARE, DAEMON, MANDATED, QT, SERVICES, WRITERS
from table import Table

SYSTEM_LOG = pathlib.Path(__file__).resolve().parents[3] / "scripts/try.d/syslog"
SYSTEM_LOG_SOCKET = pathlib.Path("/dev/log")


@dataclasses.dataclass(frozen=True)
class Row:
    """One kind of call, and the servers that are asked."""

    name: str
    operation: str
    kinds: tuple = ALL
    key: str = "LocationEnabled"
    user: str = "root"
    outstanding: int = 1


FLOOR = (Row("bus: Ping", "ping", (DAEMON,)), Row("bus: GetId", "id", (DAEMON,)))
READS = (Row("read", "read"), Row("read, 16 outstanding", "read", outstanding=16))
WRITES = (Row("write, no handler", "write"),
          Row("write, no handler, 16 outstanding", "write", outstanding=16),
          Row("write of the same value", "unchanged"),
          Row("write of the camera policy", "write", key="CameraEnabled"),
          Row("write, caller mdm", "write", user="mdm"),
          Row("write, refused", "refused", WRITERS, user="guest"))
ABSENT = (Row("write, service handler, service absent", "write", (DAEMON,), "VoiceCallsEnabled"),)
PRESENT = (Row("write, service handler, service present", "write", (DAEMON,),
               "VoiceCallsEnabled"),)
RECORDED = (Row("write, system log and its service present", "write", WRITERS),)


class Samples:
    """What each server took for one row, round by round."""

    def __init__(self, row):
        self.row = row
        self.results = {kind: [] for kind in row.kinds}

    def collect(self, programs, calls):
        """One round: every server in turn, so that the machine's load changes for all of them."""
        for kind, results in self.results.items():
            results.append(load(programs, self.row.operation, calls, SERVICES[kind], self.row.key,
                                self.row.user, self.row.outstanding))

    def median(self, kind, value="median"):
        """The median over the rounds; None for a server that was not asked."""
        rounds = self.results.get(kind)
        return statistics.median(entry[value] for entry in rounds) if rounds else None

    def ratio(self, kind):
        """The median over the rounds of the daemon's median over that of a reference."""
        pairs = zip(self.results[DAEMON], self.results.get(kind, ()))
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
        table.add(sample.row.name, *(sample.median(kind) for kind in ALL), sample.ratio(BARE),
                  sample.ratio(MANDATED), sample.ratio(QT), sample.median(DAEMON, "p90"),
                  sample.median(DAEMON, "p99"), sample.median(DAEMON, "per_second"))


def _table(place):
    return Table(f"Latency in microseconds, configuration {place}", *ALL, "/ bare", "/ mandated",
                 "/ qt", "p90", "p99", "per second")


@contextlib.contextmanager
def _all_servers(programs, keys):
    servers.reset()
    with contextlib.ExitStack() as stack:
        for kind in ALL:
            stack.enter_context(servers.server(programs, kind, keys))
        yield


@contextlib.contextmanager
def _logs(programs):
    """Both places where changes are recorded: a reader of /dev/log and the log service."""
    with (Process([SYSTEM_LOG]), Process([DEVICE, "logs"])):
        wait_for_name("org.kvtlabs.SystemLogs")
        wait_for_path(SYSTEM_LOG_SOCKET)
        yield
    SYSTEM_LOG_SOCKET.unlink()


def in_memory(programs, keys, scale):
    """All rows with the configuration in memory."""
    table = _table("in memory")
    with servers.storage(None), _all_servers(programs, keys):
        _add(table, collect(programs, (*FLOOR, *READS, *WRITES, *ABSENT), scale))
        with Process([DEVICE, 0]):
            wait_for_name("org.pelloraos.appjaild1")
            _add(table, collect(programs, PRESENT, scale))
        with _logs(programs):
            _add(table, collect(programs, RECORDED, scale))
    return table


def on_disk(programs, keys, scale, directory):
    """Writes with the configuration on a disk."""
    table = _table("on disk")
    with servers.storage(directory), _all_servers(programs, keys):
        _add(table, collect(programs, WRITES[:3], scale))
    return table
