# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""An administrator's change is in the journal even when another user floods the daemon's log."""

import os
import pathlib

import pytest
from jeepney import DBusAddress, HeaderFields, new_method_call, new_signal

from testbed import unit
from testbed.bus import POLICY, SERVICE, SWITCH, Client, flood, read_of, silent, write_of
from testbed.plugins import FILE_SWITCH, SWITCH_PLUGIN, installed
from testbed.waiting import wait_until

AUDIT = "Policy CameraEnabled changed. Old value true. New value false."
FAILED_READ = ('AccessSwitch plugin failed to retrieve value for key: "unknown"', "Return code: 2")
JOURNAL_SETTINGS = pathlib.Path("/run/systemd/journald.conf.d/test.conf")

# Calls of a flood, and lines that the journal accepts from a unit within 30 seconds. The journal
# multiplies the latter by up to six, depending on the free space of its disk.
FLOOD, BURST = (108_000, 10_000) if "GOVD_HOLD" in os.environ else (2_400, 100)


@pytest.fixture(autouse=True)
def fresh_journal():
    """A journal that has not begun to drop lines."""
    JOURNAL_SETTINGS.parent.mkdir(exist_ok=True)
    JOURNAL_SETTINGS.write_text(f"[Journal]\nRateLimitBurst={BURST}\n")
    unit.run("systemctl", "restart", "systemd-journald")


@pytest.fixture
def with_switches(stopped):
    """A daemon with an access-switch plugin without switches: each read of one fails."""
    with installed(FILE_SWITCH, SWITCH_PLUGIN):
        unit.start()
        yield


def records_of_a_change(root, journal):
    """The journal's records of a change that root makes now."""
    assert root.ask(write_of("CameraEnabled", False), 200) == (True,)
    return wait_until(lambda: [line for line in journal.lines() if line.text == AUDIT], 10)


def test_reads_of_unknown_policies(daemon, root, journal):
    flood("guest", read_of("unknown"), FLOOD)
    assert [line.priority for line in records_of_a_change(root, journal)] == [6]
    assert not [line for line in journal.lines() if "DBus" in line.text]


def test_reads_that_fail(with_switches, root, journal):
    flood("guest", read_of("unknown", SWITCH), FLOOD)
    assert records_of_a_change(root, journal)
    assert len(journal.lines()) < FLOOD / 10


def test_writes_that_change_nothing(daemon, root, journal):
    with Client("mdm") as agent:
        agent.flood(silent(write_of("CameraEnabled", True)), FLOOD)
        agent.settle()
        assert records_of_a_change(root, journal)  # a caller that has left is refused


def test_warnings_are_warnings(with_switches, guest, journal):
    guest.ask(read_of("unknown", SWITCH))
    assert [(line.text, line.priority) for line in journal.lines()[-2:]] == [
        (text, 4) for text in FAILED_READ]


def test_signatures_that_say_nothing(daemon, guest, journal):
    """The bus library writes a line for each empty signature that it reads, in its own thread."""
    odd = new_signal(DBusAddress("/a", SERVICE, "a.b"), "X", "g" * 255, ("",) * 255)
    odd.header.fields[HeaderFields.destination] = SERVICE
    guest.flood(odd, 40)
    guest.flood(silent(new_method_call(POLICY, "KeyValue", "g" * 255, ("",) * 255)), 40)
    guest.settle()
    assert unit.answers()
    lines = [line for line in journal.lines() if line.pid == daemon]
    assert lines and len(lines) < 100
