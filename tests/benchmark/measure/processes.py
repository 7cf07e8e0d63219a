# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Processes of a measurement: they end with it, and if one fails, it fails."""

import json
import os
import pathlib
import subprocess

PATIENCE = 120  # seconds; only a process that hangs takes as long


class Failure(Exception):
    """The reason why a measurement could not be made, for people."""


DEVICE = pathlib.Path(__file__).resolve().parents[1] / "services"


class Process:
    """A process that runs beside the measurement; a context that ends it."""

    def __init__(self, command, environment=None, announces=False):
        self.command = [str(part) for part in command]
        self._process = subprocess.Popen(
            self.command, env={**os.environ, **(environment or {})}, text=True,
            stdout=subprocess.PIPE if announces else subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        if announces and self._process.stdout.readline() != "ready\n":
            raise Failure(f"{self.command[0]} is not ready")

    @property
    def pid(self):
        return self._process.pid

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()

    def end(self):
        """Asks the process to end and waits until it has."""
        self._process.terminate()
        self._process.wait(PATIENCE)


def run(*command):
    """Runs a command to its end and returns what it printed."""
    done = subprocess.run([str(part) for part in command], text=True, timeout=1800,
                          capture_output=True, check=False)
    if done.returncode != 0:
        raise Failure(f"{' '.join(map(str, command))}: {done.stderr.strip()}")
    return done.stdout


def wait_for_name(name):
    """Waits until a bus name has an owner."""
    run("gdbus", "wait", "--system", "--timeout", PATIENCE, name)


def identity(user):
    """The words before a command that make it run as a user."""
    if user == "root":
        return []
    group = run("id", "-g", user).strip()
    return ["setpriv", "--reuid", user, "--regid", group, "--init-groups"]


def load(programs, operation, calls, service="org.kvt.PolicyManager", key="LocationEnabled",
         user="root", warm_up=50):
    """Makes calls and returns what they took; see govd-load --help."""
    return json.loads(run(*identity(user), programs / "govd-load", "--service", service,
                          "--key", key, "--calls", calls, "--warm-up", warm_up, operation))
