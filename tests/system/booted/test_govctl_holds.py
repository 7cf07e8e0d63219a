# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Changes with a time limit: systemd timers end them, or the next start of the device."""

import datetime
import json
import pathlib

import pytest

from testbed import govctl, unit
from testbed.bus import read_of
from testbed.waiting import holds_for, wait_until

HOLDS = pathlib.Path("/var/lib/govctl/holds")
AT_START = "govctl-release.service"


@pytest.fixture
def device(daemon, root):
    """Reads policies of a daemon that runs for the first time, without holds."""
    yield lambda key: root.ask(read_of(key))[0][1]
    assert govctl.run("release").code == 0
    assert not list(HOLDS.glob("*"))


def timers():
    """The timers of holds."""
    listed = unit.run("systemctl", "list-units", "--plain", "--no-legend", "--type=timer",
                      "govctl-release-*")
    return [line.split()[0] for line in listed.splitlines()]


def pass_time(number, **time):
    """Moves the end of a hold back by so much time."""
    path = HOLDS / f"{number}.json"
    hold = json.loads(path.read_text())
    until = datetime.datetime.fromisoformat(hold["until"].replace("Z", "+00:00"))
    hold["until"] = (until - datetime.timedelta(**time)).strftime("%Y-%m-%dT%H:%M:%SZ")
    path.write_text(json.dumps(hold))


def restart_device(while_off=None):
    """Does what a restart of the device does: ends timers and daemon, and starts them in order."""
    unit.run("systemctl", "stop", *timers(), AT_START, unit.UNIT)
    if while_off:
        while_off()
    unit.run("systemctl", "start", unit.UNIT, AT_START)


def test_timer_takes_the_change_back(device):
    outcome = govctl.run("set CameraEnabled off --for 2s")
    assert outcome.code == 0
    assert "ends it early" in outcome.out
    assert device("CameraEnabled") is False
    wait_until(lambda: device("CameraEnabled") is True)
    wait_until(lambda: not list(HOLDS.glob("*")))


def test_holds_are_listed_and_released(device):
    assert govctl.run("set CameraEnabled off --for 3h").code == 0
    assert govctl.run("apply - --for 1d12h", text="[policy]\nVpnEnabled=off\nNfcEnabled=off\n"
                      ).code == 0
    assert len(timers()) == 2
    first, second = govctl.result("holds")["holds"]
    assert [step["key"] for step in first["changes"]] == ["CameraEnabled"]
    assert {step["key"] for step in second["changes"]} == {"VpnEnabled", "NfcEnabled"}
    assert "CameraEnabled is off, and will be on again" in govctl.run("holds").out
    released = govctl.result("release", second["id"])
    assert {step["key"] for step in released["takenBack"]} == {"VpnEnabled", "NfcEnabled"}
    assert device("VpnEnabled") is True
    assert device("CameraEnabled") is False
    assert len(timers()) == 1
    assert govctl.run("release 77 --json").error == "unknown-hold"


def test_three_hours_across_a_restart(device):
    assert govctl.run("set CameraEnabled off --for 3h").code == 0
    restart_device()
    assert device("CameraEnabled") is False
    assert timers() == ["govctl-release-1.timer"]
    assert govctl.result("release")["takenBack"][0]["key"] == "CameraEnabled"


def test_time_that_ended_while_the_device_was_off(device):
    assert govctl.run("set CameraEnabled off --for 3h").code == 0
    restart_device(lambda: pass_time(1, hours=4))
    assert device("CameraEnabled") is True
    assert timers() == []
    assert not list(HOLDS.glob("*"))


def test_start_comes_before_logins():
    assert "systemd-user-sessions.service" in unit.shown("Before", AT_START).split()
    assert unit.UNIT in unit.shown("After", AT_START).split()
    assert AT_START in unit.shown("Wants", "multi-user.target").split()


def test_later_changes_are_not_taken_back(device):
    text = "[policy]\nVpnEnabled=off\nNfcEnabled=off\n"
    assert govctl.run("apply - --for 1h", text=text).code == 0
    govctl.run("set VpnEnabled on")
    govctl.run("set CameraEnabled off")
    result = govctl.result("release")
    assert [step["key"] for step in result["takenBack"]] == ["NfcEnabled"]
    assert [step["key"] for step in result["left"]] == ["VpnEnabled"]
    assert device("CameraEnabled") is False


def test_what_is_so_already_is_no_change_for_a_while(device):
    govctl.run("set CameraEnabled off")
    assert govctl.run("set CameraEnabled off --for 1h").code == 0
    assert govctl.result("holds")["holds"] == []
    assert timers() == []


def test_dry_run_makes_no_hold(device):
    assert govctl.run("set CameraEnabled off --for 1h --dry-run").code == 0
    assert govctl.result("holds")["holds"] == [] and timers() == []


def test_only_root_can(device):
    refused = govctl.run("set CameraEnabled off --for 1h --json", user="mdm")
    assert (refused.code, refused.error) == (4, "not-allowed")
    assert device("CameraEnabled") is True


@pytest.mark.parametrize("time", ["3", "h", "0s", "-1h", "3 h", "1y", "99999w", ""])
def test_wrong_times(time):
    assert govctl.run("set", "CameraEnabled", "off", f"--for={time}").code == 2
