# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon and the server that it is compared with, which has the same bus interface."""

import contextlib
import pathlib
import shutil
import tempfile

from processes import Process, run, wait_for_name

DAEMON = "govd"
REFERENCE = "reference"
ALL = (REFERENCE, DAEMON)

SERVICES = {DAEMON: "org.kvt.PolicyManager",
            REFERENCE: "org.kvt.Benchmark.Reference"}

CONFIGURATION = pathlib.Path("/etc/policy")
POLICY_FILE = CONFIGURATION / "policy.conf"
REFERENCE_FILE = CONFIGURATION / "reference.conf"


def platform_keys(programs):
    """The keys of all policies, as the daemon itself writes them at its first start."""
    reset()
    with daemon(programs):
        lines = POLICY_FILE.read_text(encoding="utf-8").splitlines()
    return [line.partition("=")[0] for line in lines if "=" in line]


def command(programs, kind, keys=()):
    """The command line of a server."""
    if kind == DAEMON:
        return ["/usr/sbin/govd"]
    return [programs / "govd-reference", SERVICES[kind], REFERENCE_FILE, *keys]


def reset():
    """Removes everything that servers have stored."""
    for path in CONFIGURATION.iterdir():
        shutil.rmtree(path) if path.is_dir() else path.unlink()


@contextlib.contextmanager
def server(programs, kind, keys=(), environment=None):
    """Runs a server and waits until it is on the bus."""
    with Process(command(programs, kind, keys), environment) as process:
        wait_for_name(SERVICES[kind])
        yield process


def daemon(programs):
    """Runs the daemon alone."""
    return server(programs, DAEMON)


@contextlib.contextmanager
def storage(directory):
    """Puts the configuration on another file system: in memory, or in a directory of a disk."""
    with tempfile.TemporaryDirectory(dir=directory) as place:
        if directory is None:
            run("mount", "-t", "tmpfs", "-o", "mode=755", "benchmark", CONFIGURATION)
        else:
            run("mount", "--bind", place, CONFIGURATION)
        try:
            yield
        finally:
            run("umount", CONFIGURATION)
