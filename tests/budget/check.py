# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Compares the installed daemon's costs with their limits; runs in the sandbox.

check.py BUDGET PROGRAMS: fails when a quantity exceeds its limit, and when there is a limit without
a quantity or a quantity without a limit.
"""

import contextlib
import pathlib
import socket
import sys
import threading

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "benchmark" / "measure"))

import footprint
import messages
import servers
from instructions import Profiler
from servers import DAEMON, SERVICES

CALLS = 50
OPERATIONS = {"read": ("read", {}),
              "write": ("write", {}),
              "unchanged": ("unchanged", {}),
              "camera": ("write", {"key": "CameraEnabled"}),
              "agent": ("write", {"user": "mdm"}),
              "refused": ("refused", {"user": "guest"})}
JOURNAL = pathlib.Path("/run/systemd/journal/socket")


def limits(path):
    """The limits by name."""
    lines = (line.partition("#")[0].split() for line in path.read_text("utf-8").splitlines())
    return {name: int(limit) for name, limit in filter(None, lines)}


def read_all(listener):
    """Reads all datagrams of a socket, without end."""
    while True:
        listener.recv(1 << 16)


@contextlib.contextmanager
def journal():
    """Provides the journal's socket to a daemon that starts in this context."""
    JOURNAL.parent.mkdir(parents=True, exist_ok=True)
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as listener:
        listener.bind(str(JOURNAL))
        threading.Thread(target=read_all, args=(listener,), daemon=True).start()
        yield
        JOURNAL.unlink()


def counts(programs):
    """Instructions and allocations of calls and of starts."""
    profiler = Profiler(programs, DAEMON)
    servers.reset()
    yield "start.first.instructions", profiler.start().instructions
    yield "start.later.instructions", profiler.start().instructions
    with profiler.running():
        for name, (operation, options) in OPERATIONS.items():
            taken = profiler.call(operation, CALLS, **options)
            yield f"{name}.instructions", taken.instructions
            yield f"{name}.allocations", taken.allocations
    with journal(), profiler.running():
        taken = profiler.call("write", CALLS)
        yield "recorded.instructions", taken.instructions
        yield "recorded.allocations", taken.allocations


def traffic(programs):
    """Messages of calls."""
    with servers.daemon(programs):
        for name, (operation, options) in OPERATIONS.items():
            taken = messages.per_call(programs, operation, SERVICES[DAEMON], **options)
            yield f"{name}.messages", taken


def quantities(programs):
    """Everything that has a limit."""
    yield "binary.bytes", footprint.binary_size()
    yield "libraries.needed", footprint.needed_libraries()
    yield "libraries.loaded", footprint.loaded_libraries()
    yield from traffic(programs)
    yield from counts(programs)


def complaints(budget, programs):
    """Prints each quantity; yields the deviations."""
    taken = dict(quantities(programs))
    for name in sorted(budget.keys() | taken.keys()):
        value, limit = taken.get(name), budget.get(name)
        print(f"{name:<28}{value!s:>12} of {limit!s:>12}", flush=True)
        if value is None or limit is None:
            yield f"{name} is measured as {value} and limited to {limit}"
        elif value > limit:
            yield f"{name} takes {value} and may take {limit}"


def main(budget, programs):
    """The exit code: 0 when everything is within the budget."""
    wrong = list(complaints(limits(pathlib.Path(budget)), pathlib.Path(programs)))
    for complaint in wrong:
        print(f"over budget: {complaint}", file=sys.stderr)
    return 1 if wrong else 0


sys.exit(main(*sys.argv[1:]))
