# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Each write has one record in the journal, with its caller and its result."""

import pathlib

import pytest

from testbed import unit
from testbed.bus import POLICY, SWITCH, Client, read_of, silent, write_of
from testbed.files import write
from testbed.plugins import FILE_LOCK_FILE
from testbed.processes import held, open_descriptors, processes_of
from testbed.waiting import wait_until

CAMERA = "CameraEnabled"
ACCEPTED, REFUSED = "6", "5"  # priorities
FLOOD = 400
LONG = 5000


@pytest.fixture
def with_plugins(lens, file_lock):
    """A daemon with one switch and one lock."""
    write(FILE_LOCK_FILE, "[lock]\npolicies=VpnEnabled\n")
    unit.start()


def caller(client):
    """The fields about a client. The daemon may not read the path of other users' programs."""
    return {"GOVD_CALLER": client.unique_name, "GOVD_CALLER_PID": f"{client.user.pid}",
            "GOVD_CALLER_UID": f"{client.user.uid}",
            "GOVD_CALLER_COMMAND": pathlib.Path(f"/proc/{client.user.pid}/comm").read_text()[:-1]}


def record(client, kind, key, new, result, **more):
    """The record of a write."""
    return {"MESSAGE": f'Write {result}: {kind} "{key}"',
            "PRIORITY": ACCEPTED if result == "accepted" else REFUSED, "GOVD_KIND": kind,
            "GOVD_KEY": key, "GOVD_NEW_VALUE": new, "GOVD_RESULT": result, **caller(client), **more}


def records(journal, count):
    """Waits for so many records and returns all."""
    return wait_until(lambda: len(found := journal.records()) >= count and found, 10)


def has_accepted(found):
    """Whether a write that was accepted is among these records."""
    return "accepted" in [one["GOVD_RESULT"] for one in found]


@pytest.mark.parametrize("name", ["root", "operator", "mdm"])
def test_accepted(daemon, journal, name):
    opened = []
    with Client(name) as client:
        for value in (False, True):
            assert client.ask(write_of(CAMERA, value)) == (True,)
            opened.append(open_descriptors(daemon))
        assert records(journal, 2) == [
            record(client, "policy", CAMERA, "false", "accepted", GOVD_OLD_VALUE="true"),
            record(client, "policy", CAMERA, "true", "accepted", GOVD_OLD_VALUE="false")]
    assert opened[0] == opened[1]


def test_odd_values(daemon, agent, journal):
    for value, signature in [(7, "y"), ("a\nb", "s"), ({}, "a{sv}")]:
        assert agent.ask(write_of("com.example.Wish", value, signature)) == (True,)
    assert [(found["GOVD_OLD_VALUE"], found["GOVD_NEW_VALUE"])
            for found in records(journal, 3)] == [("", "7"), ("7", "a\nb"), ("a\nb", "")]


@pytest.mark.parametrize("write_, expected", [
    (write_of("VpnEnabled", True), ("policy", "VpnEnabled", "true", "locked")),
    (write_of(CAMERA, "", "g"), ("policy", CAMERA, "", "cannot-be-held")),
    (write_of("a=b", False), ("policy", "a=b", "false", "not-saved")),
    (write_of("lens", "", "g", SWITCH), ("switch", "lens", "", "cannot-be-held")),
    (write_of("a=b", True, address=SWITCH), ("switch", "a=b", "true", "not-saved")),
    (write_of("ear", 1, "i", SWITCH), ("switch", "ear", "1", "refused-by-plugin")),
], ids=lambda value: "-".join(value[::3]) if isinstance(value, tuple) else "write")
def test_refused(with_plugins, agent, journal, write_, expected):
    assert agent.ask(write_) == (False,)
    assert records(journal, 1) == [record(agent, *expected)]


def test_switch(with_plugins, agent, journal):
    assert agent.ask(write_of("lens", False, address=SWITCH)) == (True,)
    assert records(journal, 1) == [
        record(agent, "switch", "lens", "false", "accepted", GOVD_OLD_VALUE="true")]


def test_no_switches(daemon, agent, journal):
    assert agent.ask(write_of("lens", False, address=SWITCH)) == (False,)
    assert records(journal, 1) == [record(agent, "switch", "lens", "false", "no-plugin")]


@pytest.mark.parametrize("address, kind", [(POLICY, "policy"), (SWITCH, "switch")],
                         ids=["policy", "switch"])
def test_denied(open_bus, daemon, guest, journal, address, kind):
    guest.refusal(write_of(CAMERA, False, address=address))
    assert records(journal, 1) == [record(guest, kind, CAMERA, "false", "denied")]


def test_vanished_caller(daemon, agent, journal):
    with held([daemon]):
        agent.send(write_of(CAMERA, False))
        agent.vanish()
    assert records(journal, 1) == [{
        "MESSAGE": f'Write denied: policy "{CAMERA}"', "PRIORITY": REFUSED, "GOVD_KIND": "policy",
        "GOVD_KEY": CAMERA, "GOVD_NEW_VALUE": "false", "GOVD_RESULT": "denied",
        "GOVD_CALLER": agent.unique_name}]


def test_what_is_no_write_over_the_bus(with_plugins, root, agent, journal):
    """Reads, values read from files and defaults are not recorded."""
    unit.run("systemctl", "restart", unit.UNIT)
    for message in (read_of(CAMERA), read_of("lens", SWITCH)):
        root.ask(message)
    assert agent.ask(write_of(CAMERA, False)) == (True,)
    assert [found["GOVD_KEY"] for found in records(journal, 1)] == [CAMERA]


def test_long_texts_are_cut(daemon, agent, journal):
    assert agent.ask(write_of("k" * LONG, "v" * LONG, "s")) == (True,)
    found, = records(journal, 1)
    mark = f"[{LONG - 1024} more bytes]"
    assert found["GOVD_KEY"] == "k" * 1024 + mark
    assert found["GOVD_NEW_VALUE"] == "v" * 1024 + mark
    assert len(found["MESSAGE"]) < 1100


def test_callers_without_rights_are_limited(open_bus, daemon, agent, guest, journal):
    guest.flood(silent(write_of(CAMERA, False)), FLOOD)
    guest.settle()
    assert agent.ask(write_of(CAMERA, False)) == (True,)
    found = wait_until(lambda: has_accepted(found := journal.records()) and found, 10)
    denied = [one for one in found if one["GOVD_RESULT"] == "denied"]
    assert 0 < len(denied) < FLOOD / 2
    assert len(denied) + sum(int(one.get("GOVD_LEFT_OUT", 0)) for one in found) == FLOOD


def test_journal_that_hangs(open_bus, daemon, agent, guest, journal):
    """More records than its queue holds delay no caller for longer than a second."""
    with held(processes_of("systemd-journald.service")):
        for _ in range(30):
            guest.refusal(write_of(CAMERA, False))
        assert agent.ask(write_of(CAMERA, False), 10) == (True,)
        assert unit.answers()
    wait_until(lambda: agent.ask(write_of(CAMERA, False)) and has_accepted(journal.records()), 10)
    found = journal.records()
    assert len(found) < 30
    assert sum(int(one.get("GOVD_LEFT_OUT", 0)) for one in found) + len(found) >= 30


def test_message_is_explained(daemon, agent, journal):
    """Without text of the caller, which would go to the terminal as it is."""
    unit.run("journalctl", "--update-catalog")
    assert agent.ask(write_of(CAMERA, False)) == (True,)
    agent.ask(write_of("Key\x1b[2J", "Value\nSubject: forged", "s"))
    records(journal, 2)
    explained = unit.run("journalctl", "--no-pager", "-x", f"MESSAGE_ID={unit.WRITE}")
    assert "Subject: Write of a policy over the bus: accepted" in explained
    assert "\x1b" not in explained and "Subject: forged" not in explained
