# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""history and undo: who changed what, from the journal, and taking back the last change."""

import json
import pathlib

import pytest

from testbed import govctl, program, unit
from testbed.bus import SWITCH, read_of, write_of
from testbed.files import POLICY_FILE, store, stored
from testbed.waiting import wait_until

CAMERA = "CameraEnabled"
WITHOUT_JOURNAL = """unshare --mount bash -c '
for folder in /var/log/journal /run/log/journal; do
    [[ ! -d $folder ]] || mount -t tmpfs none "$folder"
done
govctl --json history'"""


@pytest.fixture(autouse=True)
def no_records(stopped):
    """A journal without the records of other tests."""
    unit.run("journalctl", "--quiet", "--rotate", "--vacuum-time=1us")


def change(client, key, *value, **address):
    """A write that is accepted."""
    assert client.ask(write_of(key, *value, **address)) == (True,)


def value_of(client, key, *address):
    """The value of a policy or switch."""
    return client.ask(read_of(key, *address))[0][1]


def run(*arguments, user="root", **keywords):
    """Runs the client; for other users than root after the journal has stored all so far."""
    if user != "root":
        unit.run("journalctl", "--sync")
    return govctl.run(*arguments, user=user, **keywords)


def history(*arguments):
    """The recorded writes."""
    return run("history", "--json", *arguments).result["writes"]


def name_of(client):
    """The name of a client's process."""
    return pathlib.Path(f"/proc/{client.user.pid}/comm").read_text()[:-1]


def refused(*arguments):
    """The code and the error of an undo that fails."""
    outcome = run("undo", "--json", *arguments)
    return outcome.code, outcome.error


def test_who_turned_the_camera_off(daemon, agent):
    change(agent, CAMERA, False)
    found, = history()
    assert found.pop("time").endswith("Z")
    assert found == {
        "kind": "policy", "key": CAMERA, "before": "true", "value": "false", "result": "accepted",
        "caller": agent.unique_name, "pid": agent.user.pid, "uid": agent.user.uid, "user": "mdm",
        "program": None, "command": name_of(agent), "leftOut": 0}
    line, = run("history", CAMERA).lines
    assert line.split("  ")[1:] == ["mdm", f'"{name_of(agent)}"', CAMERA, "on -> off", "accepted"]


def test_denied(open_bus, daemon, agent, guest):
    guest.refusal(write_of(CAMERA, False))
    change(agent, CAMERA, False)
    assert [found["result"] for found in history()] == ["denied", "accepted"]
    found, = history("--denied")
    assert (found["user"], found["before"], found["value"]) == ("guest", None, "false")
    line, = run("history", "--denied").lines
    assert line.split("  ")[1:] == ["guest", f'"{name_of(guest)}"', CAMERA, "-> off", "denied"]


def test_keys_and_times(lens, daemon, agent):
    change(agent, CAMERA, False)
    change(agent, "VpnEnabled", False)
    change(agent, "lens", False, address=SWITCH)
    everything = history()
    assert [found["key"] for found in everything] == [CAMERA, "VpnEnabled", "lens"]
    assert [found["key"] for found in history("lens", "Cam*")] == [CAMERA, "lens"]
    assert history("NfcEnabled") == []
    time = everything[1]["time"].replace("T", " ").replace("Z", " UTC")
    assert history("--since", time) == everything[1:]
    assert history("--since", "tomorrow") == []


def test_texts_cannot_steer_the_terminal(daemon, agent):
    assert agent.ask(write_of("a\u009b2Jb", "c\x1b[2J\nd", "s")) == (False,)
    found, = history()
    assert (found["key"], found["value"]) == ("a\u009b2Jb", "c\x1b[2J\nd")
    line, = run("history").lines
    assert line.split("  ")[3:] == ['"a\\u009b2Jb"', '-> "c\\u001b[2J\\u000ad"', "not-saved"]


def test_records_of_other_processes_are_ignored(daemon):
    forged = {"MESSAGE_ID": unit.WRITE, "GOVD_KIND": "policy", "GOVD_KEY": CAMERA,
              "GOVD_OLD_VALUE": "false", "GOVD_NEW_VALUE": "true", "GOVD_RESULT": "accepted"}
    text = "".join(f"{name}={value}\n" for name, value in forged.items())
    for user in ("guest", "root"):
        with program.Program(["logger", "--journald"], user=user, text=text) as logger:
            assert logger.finish().code == 0
    found = ("journalctl", "-o", "json", f"MESSAGE_ID={unit.WRITE}")
    wait_until(lambda: len(unit.run(*found).splitlines()) == 2)
    assert history() == []
    assert run("undo", "--json").result["write"] is None


def test_undo(daemon, agent):
    change(agent, CAMERA, False)
    change(agent, "VpnEnabled", False)
    outcome = run("undo", CAMERA)
    assert outcome.code == 0
    first, second = outcome.lines[:2]
    assert first.startswith(f'taking back what mdm did with "{name_of(agent)}" at ')
    assert first.endswith(f": {CAMERA}: on -> off")
    assert second == f"{CAMERA}: off -> on"
    assert value_of(agent, CAMERA) is True
    assert value_of(agent, "VpnEnabled") is False


def test_undo_of_the_last_change_of_all(daemon, agent):
    change(agent, CAMERA, False)
    change(agent, "VpnEnabled", False)
    change(agent, CAMERA, False)  # changes nothing
    undone = run("undo", "--json").result
    assert undone["write"]["key"] == "VpnEnabled"
    assert undone["changes"] == [
        {"kind": "policy", "key": "VpnEnabled", "before": False, "value": True}]
    assert value_of(agent, CAMERA) is False


def test_undo_twice(daemon, agent):
    change(agent, CAMERA, False)
    for value in (True, False):
        assert run("undo").code == 0
        assert value_of(agent, CAMERA) is value
    assert [found["user"] for found in history()] == ["mdm", "root", "root"]


def test_undo_of_a_switch(lens, daemon, agent):
    change(agent, "lens", False, address=SWITCH)
    outcome = run("undo", "lens")
    assert outcome.lines[1] == 'switch "lens": off -> on'
    assert value_of(agent, "lens", SWITCH) is True


def test_dry_run(daemon, agent):
    change(agent, CAMERA, False)
    outcome = run("undo", "--dry-run")
    assert outcome.lines[0] == "dry run: nothing is changed"
    assert outcome.lines[2] == f"{CAMERA}: off -> on"
    assert run("undo", "--dry-run", "--json").result["dryRun"] is True
    assert value_of(agent, CAMERA) is False
    assert len(history()) == 1


def test_changed_since(daemon, agent):
    change(agent, CAMERA, False)
    unit.run("systemctl", "stop", unit.UNIT)
    store({**stored(), CAMERA: True}, POLICY_FILE)
    unit.start()
    assert refused() == (3, "changed-since")
    assert len(history()) == 1


def test_no_change_to_undo(daemon, agent):
    change(agent, CAMERA, True)
    outcome = run("undo", CAMERA, "--json")
    assert (outcome.code, outcome.result["write"], outcome.result["changes"]) == (0, None, [])


def test_what_is_neither_on_nor_off(daemon, agent):
    change(agent, CAMERA, "", "s")
    assert refused() == (3, "not-undoable")
    change(agent, "com.example.Wish", True)
    change(agent, "com.example.Wish", False)
    assert refused() == (3, "not-undoable")


def test_stored_value_behind_a_switch(lens, daemon, agent):
    """A policy that a switch forced off may have been stored on, which is not recorded."""
    change(agent, "lens", False, address=SWITCH)
    change(agent, "NfcEnabled", True)
    change(agent, "lens", True, address=SWITCH)
    assert refused("NfcEnabled") == (3, "not-undoable")
    assert value_of(agent, "NfcEnabled") is True
    for value in (False, True):
        change(agent, "NfcEnabled", value)
    assert run("undo", "NfcEnabled").code == 0
    assert value_of(agent, "NfcEnabled") is False


def test_change_of_a_stored_value_behind_a_switch(lens, daemon, agent):
    """It is on record as "off -> off", and undo sets back no older change instead."""
    change(agent, "lens", False, address=SWITCH)
    change(agent, "NfcEnabled", False)
    for arguments in ((), ("--dry-run",), ("NfcEnabled",)):
        assert refused(*arguments) == (3, "not-undoable")
    assert run("undo", "lens").code == 0


@pytest.mark.parametrize("user, verb", [("guest", "history"), ("mdm", "history"), ("mdm", "undo")])
def test_who_may_not_read_the_journal(daemon, user, verb):
    outcome = run(verb, user=user)
    assert outcome.code == 4
    assert "this user may not read the system's journal" in outcome.err.replace("\n", " ")


def test_members_of_the_group_may(daemon, agent):
    change(agent, CAMERA, False)
    assert len(run("history", user="guest", groups=["systemd-journal"]).lines) == 1


def test_undo_needs_the_right_to_write(daemon):
    assert run("undo", user="guest", groups=["systemd-journal"]).code == 4


def test_no_journal(daemon):
    outcome = govctl.shell(WITHOUT_JOURNAL)
    assert (outcome.code, outcome.error) == (5, "no-journal")
    outcome = run("history", "--json", environment={"PATH": "/nonexistent"})
    assert (outcome.code, outcome.error) == (5, "no-journal")


@pytest.mark.parametrize("arguments, error", [
    (("history", "--since", "then"), "usage"),
    (("history", "--since", ""), "usage"),
    (("undo", CAMERA, "VpnEnabled"), "usage"),
    (("undo", "CameraEnable"), "unknown-policy"),
    (("history", "CameraEnable"), "unknown-policy")])
def test_wrong_lines(daemon, arguments, error):
    outcome = run(*arguments, "--json")
    assert (outcome.code, outcome.error) == (2, error)
    assert json.loads(outcome.out)["verb"] == arguments[0]
