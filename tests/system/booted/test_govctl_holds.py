# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Changes with a time limit: a systemd timer ends them, or the next start of the device."""

import contextlib
import datetime
import json
import pathlib
import subprocess

import pytest

from testbed import govctl, unit
from testbed.bus import read_of, write_of
from testbed.files import replace, write
from testbed.plugins import (FILE_LOCK, FILE_LOCK_FILE, FILE_SWITCH, LOCK_PLUGINS, SWITCH_PLUGIN,
                             installed)
from testbed.waiting import wait_until

HOLDS = pathlib.Path("/var/lib/govctl/holds")
RELEASE = "govctl-release.service"
TIMER = "govctl-release.timer"
BACKUP_LOCKED = "[lock]\npolicies=BackupEnabled\n"
CAMERA_OFF = "[policy]\nCameraEnabled=off\n"
CAMERA_ON = "[policy]\nCameraEnabled=on\n"
SIX = ["CameraEnabled", "NfcEnabled", "VpnEnabled", "WlanEnabled", "BackupEnabled",
       "BrowserEnabled"]


@pytest.fixture
def device(daemon, root):
    """Reads policies of a daemon that runs for the first time, without holds."""
    yield lambda key: root.ask(read_of(key))[0][1]
    assert govctl.run("release").code == 0
    assert not list(HOLDS.glob("*"))
    assert timers() == []


@pytest.fixture
def locks(stopped):
    """The plugin that locks what a file lists."""
    write(FILE_LOCK_FILE, BACKUP_LOCKED)
    with installed(FILE_LOCK, LOCK_PLUGINS / "filelock.so"):
        yield


@pytest.fixture
def lens(stopped):
    """A switch that governs a policy."""
    write("/etc/govd/fileswitch.conf", "[lens]\npolicies=NfcEnabled\nvalue=true\n")
    with installed(FILE_SWITCH, SWITCH_PLUGIN):
        yield


@contextlib.contextmanager
def camera_locked(device):
    """Locks the camera, and another policy, which shows when the locks have changed."""
    replace(FILE_LOCK_FILE, "[lock]\npolicies=CameraEnabled;WlanEnabled\n")
    wait_until(lambda: not device("WlanEnabled"))
    yield
    replace(FILE_LOCK_FILE, BACKUP_LOCKED)
    wait_until(lambda: device("WlanEnabled"))


def timers():
    """The timers of holds."""
    listed = unit.run("systemctl", "list-units", "--plain", "--no-legend", "--type=timer",
                      "govctl-release*")
    return [line.split()[0] for line in listed.splitlines()]


def held():
    """The keys in each hold."""
    return [[step["key"] for step in hold["changes"]] for hold in govctl.result("holds")["holds"]]


def pass_time(number, **time):
    """Moves the end of a hold back by so much time."""
    path = HOLDS / f"{number}.json"
    hold = json.loads(path.read_text())
    until = datetime.datetime.fromisoformat(hold["until"].replace("Z", "+00:00"))
    hold["until"] = (until - datetime.timedelta(**time)).strftime("%Y-%m-%dT%H:%M:%SZ")
    path.write_text(json.dumps(hold))


def stop_device():
    """Does what switching the device off does: ends timers and daemon."""
    unit.run("systemctl", "stop", *timers(), RELEASE, unit.UNIT)


def run_release():
    """Starts the service that ends holds, as the timer or the start of the device does. Whether it
    has taken back all that was due."""
    return subprocess.run(["systemctl", "start", RELEASE], check=False).returncode == 0


def test_timer_takes_the_change_back(device):
    outcome = govctl.run("set CameraEnabled off --for 2s")
    assert outcome.code == 0
    assert "ends it early" in outcome.out
    assert device("CameraEnabled") is False
    wait_until(lambda: device("CameraEnabled") is True)
    wait_until(lambda: not list(HOLDS.glob("*")))


def test_one_timer_runs_for_each_end_in_turn(device):
    for key, time in (("CameraEnabled", "3h"), ("NfcEnabled", "4s"), ("VpnEnabled", "2s")):
        assert govctl.run("set", key, "off", "--for", time).code == 0
        assert timers() == [TIMER]
    wait_until(lambda: held() == [["CameraEnabled"]])
    assert (device("VpnEnabled"), device("NfcEnabled"), device("CameraEnabled")) == (
        True, True, False)
    wait_until(lambda: timers() == [TIMER])


def test_holds_are_listed_and_released(device):
    assert govctl.run("set CameraEnabled off --for 3h").code == 0
    assert govctl.run("apply - --for 1d12h", text="[policy]\nVpnEnabled=off\nNfcEnabled=off\n"
                      ).code == 0
    first, second = govctl.result("holds")["holds"]
    assert [step["key"] for step in first["changes"]] == ["CameraEnabled"]
    assert {step["key"] for step in second["changes"]} == {"VpnEnabled", "NfcEnabled"}
    released = govctl.result("release", second["id"])
    assert {step["key"] for step in released["takenBack"]} == {"VpnEnabled", "NfcEnabled"}
    assert device("VpnEnabled") is True
    assert device("CameraEnabled") is False
    assert timers() == [TIMER]
    assert govctl.run("release 77 --json").error == "unknown-hold"


def test_list_tells_what_was_set_not_how_it_is(device, root):
    govctl.run("set CameraEnabled off --for 3h")
    root.ask(write_of("CameraEnabled", True))
    outcome = govctl.run("holds", user="guest")
    assert "CameraEnabled was set to off, and will be on again unless it is changed" in outcome.out


def test_all_users_may_read_holds_whatever_the_mask(device):
    assert govctl.shell("umask 077; govctl set CameraEnabled off --for 3h").code == 0
    assert "CameraEnabled" in govctl.run("holds", user="guest").out


def test_three_hours_across_a_restart(device):
    assert govctl.run("set CameraEnabled off --for 3h").code == 0
    stop_device()
    unit.start()
    assert run_release()
    assert device("CameraEnabled") is False
    assert timers() == [TIMER]
    assert govctl.result("release")["takenBack"][0]["key"] == "CameraEnabled"


def test_time_that_ended_while_the_device_was_off(device):
    assert govctl.run("set CameraEnabled off --for 3h").code == 0
    stop_device()
    pass_time(1, hours=4)
    unit.start()
    assert run_release()
    assert device("CameraEnabled") is True
    assert not list(HOLDS.glob("*"))


def test_start_without_the_daemon_sets_the_timer(device):
    govctl.run("set CameraEnabled off --for 3h")
    stop_device()
    assert run_release()
    assert timers() == [TIMER]
    pass_time(1, hours=4)
    assert not run_release()
    assert timers() == [TIMER]
    unit.start()
    assert run_release()
    assert device("CameraEnabled") is True


def test_start_can_be_repeated(device):
    govctl.run("set CameraEnabled off --for 3h")
    for _ in range(2):
        assert govctl.run("release --due").code == 0
        unit.run("systemctl", "restart", RELEASE)
        assert timers() == [TIMER]


def test_start_comes_before_logins():
    assert "systemd-user-sessions.service" in unit.shown("Before", RELEASE).split()
    assert unit.UNIT in unit.shown("After", RELEASE).split()
    assert RELEASE in unit.shown("Wants", "multi-user.target").split()


def test_what_is_refused_is_tried_again(locks, device):
    govctl.run("set CameraEnabled off --for 2s")
    with camera_locked(device):
        wait_until(lambda: unit.shown("Result", RELEASE) == "exit-code")
        wait_until(lambda: timers() == [TIMER])
        assert held() == [["CameraEnabled"]]
    assert govctl.run("release 1").code == 0
    assert device("CameraEnabled") is True
    assert timers() == []
    assert govctl.run("set CameraEnabled off --for 3h").code == 0


def test_what_was_refused_ends_with_the_lock(locks, device):
    govctl.run("set CameraEnabled off --for 3h")
    pass_time(1, hours=4)
    with camera_locked(device):
        assert not run_release()
    wait_until(lambda: device("CameraEnabled") is True)


def test_what_ended_once_is_not_taken_back_again(locks, device):
    govctl.run("apply - --for 3h", text="[policy]\nCameraEnabled=off\nNfcEnabled=off\n")
    with camera_locked(device):
        refused = govctl.run("release 1 --json")
        assert (refused.code, refused.error) == (3, "refused")
        assert [step["key"] for step in refused.result["takenBack"]] == ["NfcEnabled"]
        assert [step["key"] for step in refused.result["failed"]] == ["CameraEnabled"]
        assert "CameraEnabled is not taken back, and stays" in govctl.run("release 1").out
    govctl.run("set NfcEnabled off")
    assert govctl.run("release 1").code == 0
    assert (device("NfcEnabled"), device("CameraEnabled")) == (False, True)


def test_later_changes_are_not_taken_back(device, root):
    text = "[policy]\nVpnEnabled=off\nNfcEnabled=off\n"
    assert govctl.run("apply - --for 1h", text=text).code == 0
    root.ask(write_of("VpnEnabled", True))
    root.ask(write_of("CameraEnabled", False))
    result = govctl.result("release")
    assert [step["key"] for step in result["takenBack"]] == ["NfcEnabled"]
    assert [step["key"] for step in result["left"]] == ["VpnEnabled"]
    assert device("CameraEnabled") is False


@pytest.mark.parametrize("later, text, left, value", [
    ("set CameraEnabled off --for 5h", "", ["2"], True),
    ("set CameraEnabled off --for 1h", "", ["2"], True),
    ("set CameraEnabled off", "", [], False),
    ("set CameraEnabled on --for 5h", "", [], True),
    ("set CameraEnabled on", "", [], True),
    ("apply - --for 5h", CAMERA_OFF, ["2"], True),
    ("apply -", CAMERA_OFF, [], False),
    ("apply - --for 5h", CAMERA_ON, [], True),
    ("undo CameraEnabled", "", [], True),
])
def test_later_change_decides(device, later, text, left, value):
    """It ends the hold of what it changes, and what is held anew returns to what was before that."""
    govctl.run("set CameraEnabled off --for 3h")
    unit.run("journalctl", "--sync")
    outcome = govctl.run(later, text=text)
    assert outcome.code == 0
    assert "hold 1 does not take back CameraEnabled any more\n" in outcome.out
    assert [hold["id"] for hold in govctl.result("holds")["holds"]] == left
    assert timers() == [TIMER] * len(left)
    assert govctl.run("release").code == 0
    assert device("CameraEnabled") is value


def test_later_change_that_is_refused_decides_nothing(locks, device):
    govctl.run("set CameraEnabled off --for 3h")
    with camera_locked(device):
        assert govctl.run("set CameraEnabled on --for 5h").code == 3
    hold, = govctl.result("holds")["holds"]
    assert hold["id"] == "1"


def test_later_change_of_a_switch_decides(lens, device):
    assert govctl.run("apply - --for 3h", text="[switch]\nlens=off\n").code == 0
    outcome = govctl.run("switch set lens off")
    assert 'hold 1 does not take back switch "lens" any more\n' in outcome.err
    assert held() == []
    assert govctl.run("switch get lens").out == "off\n"


def test_later_change_by_another_user_cannot_end_a_hold(device):
    govctl.run("set CameraEnabled off --for 3h")
    outcome = govctl.run("set CameraEnabled off", user="mdm")
    assert "hold 1 may still take back CameraEnabled, which only root can change\n" in outcome.out
    assert held() == [["CameraEnabled"]]


def test_what_is_so_already_is_no_change_for_a_while(device):
    govctl.run("set CameraEnabled off")
    assert govctl.run("set CameraEnabled off --for 1h").code == 0
    assert held() == [] and timers() == []


def test_change_without_an_answer_keeps_its_limit(device, runtime_manager):
    late = govctl.run("apply - --for 3h --timeout 2", text="[policy]\nMessagesEnabled=off\n")
    assert late.code == 6
    assert held() == [["MessagesEnabled"]]
    runtime_manager.close()
    wait_until(lambda: device("MessagesEnabled") is False)


def test_several_at_once(device):
    with contextlib.ExitStack() as running:
        clients = [running.enter_context(govctl.Govctl("set", key, "off", "--for", "3h"))
                   for key in SIX]
        assert all("ends it early" in client.finish().out for client in clients)
    assert sorted(held()) == sorted([key] for key in SIX)
    assert timers() == [TIMER]


@pytest.mark.parametrize("content", [
    '{"id": "1", "un', "{}", '{"until": "2026-01-31T12:00:00Z", "changes": []}',
    '{"until": "2026-01-31T12:00:00Z", "changes": [{"kind": "policy", "key": "CameraEnabled"}]}'])
def test_damaged_hold_is_told_and_kept(device, content):
    govctl.run("set CameraEnabled off --for 3h")
    file = HOLDS / "1.json"
    file.write_text(content)
    for arguments in ("holds", "release", "release 1", "release --due"):
        outcome = govctl.run(arguments)
        assert (outcome.code, outcome.out) == (5, "")
        assert f"{file} is damaged, so its changes are not taken back" in outcome.err
    assert govctl.run("holds --json").error == "bad-file"
    file.unlink()


def test_dry_run_holds_nothing(device):
    assert govctl.run("set CameraEnabled off --for 1h --dry-run").code == 0
    assert held() == [] and timers() == []


def test_only_root_can(device):
    refused = govctl.run("set CameraEnabled off --for 1h --json", user="mdm")
    assert (refused.code, refused.error) == (4, "not-allowed")
    assert device("CameraEnabled") is True
    govctl.run("set CameraEnabled off --for 1h")
    refused = govctl.run("release --json", user="mdm")
    assert (refused.code, refused.error) == (4, "not-allowed")
    assert device("CameraEnabled") is False


@pytest.mark.parametrize("time", ["3", "h", "0s", "-1h", "3 h", "1y", "99999w", ""])
def test_wrong_times(time):
    assert govctl.run("set", "CameraEnabled", "off", f"--for={time}").code == 2
