# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Changes and locks that come while a change with a time limit runs."""

import contextlib
import os
import pathlib
import signal
import time

import pytest

from testbed import govctl, unit
from testbed.bus import write_of
from testbed.files import replace, write
from testbed.holds import RELEASE, TIMER, held, pass_time, run_release, timers
from testbed.plugins import FILE_LOCK_FILE, FILE_SWITCH_FILE
from testbed.waiting import wait_until

BACKUP_LOCKED = "[lock]\npolicies=BackupEnabled\n"
CAMERA_OFF = "[policy]\nCameraEnabled=off\n"
CAMERA_ON = "[policy]\nCameraEnabled=on\n"
MESSAGES_OFF = "[policy]\nMessagesEnabled=off\n"
SLOW_CHANGES = ["set MessagesEnabled off --for 3h", "apply - --for 3h"]
AWAY = pathlib.Path("/etc/govd/away")


@pytest.fixture
def locks(file_lock):
    """A file with a lock."""
    write(FILE_LOCK_FILE, BACKUP_LOCKED)


@contextlib.contextmanager
def camera_locked(device):
    """Locks the camera, and another policy, which shows when the locks have changed."""
    replace(FILE_LOCK_FILE, "[lock]\npolicies=CameraEnabled;WlanEnabled\n")
    wait_until(lambda: not device("WlanEnabled"))
    yield
    replace(FILE_LOCK_FILE, BACKUP_LOCKED)
    wait_until(lambda: device("WlanEnabled"))


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
    _, again = unit.run("busctl", "get-property", "org.freedesktop.systemd1",
                        "/org/freedesktop/systemd1/unit/govctl_2drelease_2etimer",
                        "org.freedesktop.systemd1.Timer", "NextElapseUSecRealtime").split()
    assert 0 < int(again) / 1e6 - time.time() <= 30
    assert run_release()
    assert device("CameraEnabled") is True


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
    """It ends the hold of what it changes. What it holds returns to what was before that hold."""
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
    assert 'hold 1 does not take back switch "lens" any more\n' in outcome.out
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


@pytest.mark.parametrize("change", SLOW_CHANGES)
def test_change_without_an_answer_keeps_its_limit(device, runtime_manager, change):
    assert govctl.run(f"{change} --timeout 2", text=MESSAGES_OFF).code == 6
    assert held() == [["MessagesEnabled"]]
    runtime_manager.close()
    wait_until(lambda: device("MessagesEnabled") is False)


@pytest.mark.parametrize("change", SLOW_CHANGES)
def test_change_of_a_daemon_that_dies_keeps_its_limit(device, runtime_manager, change):
    pid = unit.main_pid()
    with govctl.Govctl(*change.split(), text=MESSAGES_OFF) as client:
        runtime_manager.next_call()
        os.kill(pid, signal.SIGKILL)
        assert client.finish().code == 5
    runtime_manager.close()
    unit.comes_back(pid)
    assert device("MessagesEnabled") is False
    assert held() == [["MessagesEnabled"]]


def test_switch_without_its_plugin_stays_in_its_hold(lens, device):
    assert govctl.run("apply - --for 3h", text="[switch]\nlens=off\n").code == 0
    FILE_SWITCH_FILE.rename(AWAY)
    wait_until(lambda: govctl.run("switch list --keys").out == "")
    gone = govctl.run("release --json")
    assert (gone.code, gone.error) == (3, "unknown-switch")
    assert held() == [["lens"]]
    AWAY.rename(FILE_SWITCH_FILE)
    wait_until(lambda: govctl.run("switch list --keys").out == "lens\n")
