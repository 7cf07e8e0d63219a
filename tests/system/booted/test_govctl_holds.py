# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Changes with a time limit: a systemd timer ends them, or the next start of the device."""

import contextlib
import shutil

import pytest

from testbed import files, govctl, unit
from testbed.bus import write_of
from testbed.holds import HOLDS, RELEASE, TIMER, held, pass_time, run_release, stop_device, timers
from testbed.waiting import wait_until

SIX = ["CameraEnabled", "NfcEnabled", "VpnEnabled", "WlanEnabled", "BackupEnabled",
       "BrowserEnabled"]


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


def test_all_users_may_list_what_was_set_not_how_it_is(device, root):
    assert govctl.shell("umask 077; govctl set CameraEnabled off --for 3h").code == 0
    root.ask(write_of("CameraEnabled", True))
    outcome = govctl.run("holds", user="guest")
    assert "CameraEnabled was set to off, and will be on again unless it is changed" in outcome.out


def test_release_shows_what_is_not_in_force(device):
    govctl.run("set CameraEnabled off --for 3h")
    files.CAMERA_MARKER.symlink_to("/nonexistent/file")
    outcome = govctl.run("release")
    assert outcome.code == 8
    assert outcome.out.startswith("CameraEnabled: off -> on\nCameraEnabled is not in force: ")
    assert held() == []


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


def test_hold_that_cannot_be_saved_changes_nothing(device):
    HOLDS.mkdir(parents=True, exist_ok=True)
    with files.small_disk(HOLDS.parent, "64k"):
        HOLDS.mkdir()
        with contextlib.suppress(OSError):
            (HOLDS.parent / "filler").write_bytes(bytes(1 << 20))
        for arguments in ("set CameraEnabled off --for 1h --json", "apply - --for 1h --json"):
            full = govctl.run(arguments, text="[policy]\nCameraEnabled=off\n")
            assert (full.code, full.error) == (5, "bad-file")
        assert not list(HOLDS.glob("*"))
    assert device("CameraEnabled") is True


def test_copy_of_a_hold_is_another_hold(device):
    govctl.run("set CameraEnabled off --for 3h")
    shutil.copy(HOLDS / "1.json", HOLDS / "1.old.json")
    assert sorted(hold["id"] for hold in govctl.result("holds")["holds"]) == ["1", "1.old"]


def test_dry_run_makes_no_hold(device):
    assert govctl.run("set CameraEnabled off --for 1h --dry-run").code == 0
    assert held() == [] and timers() == []


def test_only_root_can(device):
    refused = govctl.run("set CameraEnabled off --for 1h --json", user="mdm")
    assert (refused.code, refused.error) == (4, "not-allowed")
    assert device("CameraEnabled") is True
    assert govctl.run("set CameraEnabled off --for 1h --dry-run", user="mdm").code == 4
    assert govctl.run("apply - --for 1h --dry-run", text="", user="mdm").code == 4
    govctl.run("set CameraEnabled off --for 1h")
    refused = govctl.run("release --json", user="mdm")
    assert (refused.code, refused.error) == (4, "not-allowed")
    assert device("CameraEnabled") is False


@pytest.mark.parametrize("time", ["3", "h", "0s", "-1h", "3 h", "1y", "99999w", ""])
def test_wrong_times(time):
    assert govctl.run("set", "CameraEnabled", "off", f"--for={time}").code == 2
