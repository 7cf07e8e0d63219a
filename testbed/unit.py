# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon as a service of systemd, and its messages in the journal."""

import contextlib
import json
import pathlib
import shutil
import subprocess
from dataclasses import dataclass

import pytest
from jeepney import DBusErrorResponse

from testbed.bus import Client, read_of
from testbed.waiting import wait_until

UNIT = "govd.service"
WRITE = "16b3c2249be6438e91cdc01023e34dbd"  # MESSAGE_ID of the records of writes
DROP_INS = pathlib.Path("/run/systemd/system")


def run(*command):
    """Runs a program to its end and returns its output. Raises CalledProcessError."""
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout.strip()


def refuse_elsewhere():
    """Ends the tests outside the sandbox that boots: they change the machine."""
    booted = pathlib.Path("/proc/1/comm").read_text() == "systemd\n"
    if not (booted and pathlib.Path("/run/govd-sandbox").exists()):
        pytest.exit("These tests run in the sandbox only: scripts/sandbox --boot -- ...", 1)


def reset():
    """Stops the daemon and restores the files of a fresh installation."""
    run("systemctl", "stop", UNIT)
    run("systemctl", "reset-failed")
    for path in ("/etc/policy", "/etc/govd", "/var/lib/govd", "/var/lib/devel-su"):
        shutil.rmtree(path, ignore_errors=True)
    run("systemd-tmpfiles", "--create", "govd.conf")


def start():
    """Starts the daemon and returns when it serves. Raises CalledProcessError."""
    run("systemctl", "start", UNIT)


def shown(name, unit=UNIT):
    """A property of a unit, as text."""
    return run("systemctl", "show", "-P", name, unit)


def main_pid():
    """The daemon's process id; 0 when it does not run."""
    return int(shown("MainPID"))


def restarts():
    """How often systemd has restarted the daemon by itself."""
    return int(shown("NRestarts"))


def root_content():
    """The paths of all that is in the daemon's root directory."""
    return sorted(pathlib.Path(shown("RootDirectory")).rglob("*"))


def answers(deadline=5.0):
    """Whether a read by a user without rights is answered within `deadline` seconds."""
    try:
        with Client("guest") as client:
            return bool(client.ask(read_of("CameraEnabled"), deadline))
    except (ConnectionError, DBusErrorResponse, TimeoutError):
        return False


def comes_back(pid, deadline=60.0):
    """Waits until another process than `pid` answers; TimeoutError after `deadline` seconds."""
    wait_until(lambda: main_pid() not in (0, pid) and answers(), deadline)


@contextlib.contextmanager
def drop_in(text, unit=UNIT):
    """Adds a drop-in to a unit as long as the context lasts; it applies from the next start on."""
    file = DROP_INS / f"{unit}.d" / "test.conf"
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(text)
    run("systemctl", "daemon-reload")
    try:
        yield
    finally:
        file.unlink()
        run("systemctl", "daemon-reload")


@dataclass
class Line:
    """A line of the journal: its text, its priority as in syslog.h, and the process it is from."""
    text: str
    priority: int
    pid: int


class Journal:
    """The daemon's messages since this object was made, restarts included."""

    def __init__(self):
        shown_cursor = run("journalctl", "--quiet", "--no-pager", "-n", "0", "--show-cursor")
        self._cursor = shown_cursor.removeprefix("-- cursor: ")

    def lines(self):
        """All lines so far, in their order."""
        return [line_of(entry) for entry in self._entries()]

    def records(self):
        """The records of writes so far, in their order: message, priority, and the daemon's own
        fields."""
        return [{name: value for name, value in entry.items()
                 if name.startswith("GOVD_") or name in ("MESSAGE", "PRIORITY")}
                for entry in self._entries() if entry.get("MESSAGE_ID") == WRITE]

    def _entries(self):
        run("journalctl", "--sync")
        entries = run("journalctl", "-o", "json", "--all", "--no-pager", "-u", UNIT,
                      "-t", "govd", f"--cursor={self._cursor}")
        # Not --after-cursor: it leaves out the first entry if that at the cursor is none of these.
        return [entry for entry in map(json.loads, entries.splitlines())
                if entry["__CURSOR"] != self._cursor]


def line_of(entry):
    """A line from an entry of the journal, whose text is a list of bytes if it is not printable."""
    text = entry["MESSAGE"]
    if isinstance(text, list):
        text = bytes(text).decode(errors="replace")
    return Line(text, int(entry["PRIORITY"]), int(entry["_PID"]))
