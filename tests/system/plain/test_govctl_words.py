# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The texts and lists of govctl, and its waiting times."""

import subprocess

import pytest

from testbed import govctl
from testbed.files import SWITCH_FILE, store
from testbed.services.service import late


@pytest.fixture
def radio(switches):
    """A plugin with a switch that is on and governs wireless networks."""
    switches.set_switch("radio", [4], True)
    return switches


def test_bare_name_is_a_summary(daemon, radio):
    store({"CameraEnabled": False})
    daemon.start()
    daemon.set_switch("radio", False)
    text = govctl.run("").out
    assert "CameraEnabled off" in text and '"radio" off' in text
    result = govctl.result("")
    assert (result["off"], result["offBySwitch"], result["switchesOff"]) == (3, 1, ["radio"])


def test_keys_of_what_is_off(daemon):
    store({"CameraEnabled": False, "UserReportExportEnabled": True})
    daemon.start()
    assert govctl.run("list --off --keys").out == "CameraEnabled\n"
    assert govctl.result("list --off --keys Vpn*")["keys"] == []


def test_patterns(daemon):
    daemon.start()
    assert govctl.run("list --keys Vpn* [N]fc*").lines == ["VpnEnabled", "NfcEnabled"]
    assert [line.split()[0] for line in govctl.run("list Vpn*").lines] == ["VpnEnabled"]
    assert govctl.run("list X*").code == 2


def test_fields(daemon, radio):
    daemon.start()
    daemon.set_switch("radio", False)
    assert govctl.run("list WlanEnabled --fields key,value,stored,reason,enforced,switches").out == (
        "WlanEnabled\toff\ton\tswitch\tno\tradio\n")
    assert govctl.run("list --fields key,colour").code == 2
    assert govctl.run("list --fields key --json").error == "usage"


def test_policy_that_is_stored_off_as_well(daemon, radio):
    store({"WlanEnabled": False})
    daemon.start()
    daemon.set_switch("radio", False)
    assert "it is stored off as well" in govctl.run("explain WlanEnabled").out


def test_policy_without_a_value_is_not_locked(daemon, lock_plugin):
    lock = lock_plugin("CameraEnabled")
    lock.set_locked("CameraEnabled")
    daemon.start()
    lock.set_locked()
    lines = govctl.run("explain CameraEnabled").lines
    assert ["lock", "no"] in [line.split() for line in lines]


def test_healthy_device_with_a_lock_and_a_switch(daemon, radio, lock_plugin):
    lock = lock_plugin("CameraEnabled")
    daemon.start()
    lock.set_locked("CameraEnabled")
    daemon.set_switch("radio", False)
    assert govctl.run("status").code == 0
    assert len(govctl.result("status")["differences"]) == 2


def test_same_value_is_saved_and_recorded(daemon, radio):
    daemon.start()
    daemon.forget()
    assert "saved and recorded again" in govctl.run("set CameraEnabled on").out
    assert "saved and recorded again" in govctl.run("switch set radio on").out
    assert len(daemon.records()) == 2
    assert SWITCH_FILE.exists()


def test_change_waits_for_a_slow_service(device_sentry, daemon):
    device_sentry.appear()
    daemon.start()
    device_sentry.fail(late(6), "Set")
    outcome = govctl.run("set UsbDevicesEnabled off")
    assert (outcome.code, outcome.out) == (0, "UsbDevicesEnabled: on -> off\n")
    assert outcome.err.startswith("govctl: waiting for the daemon")
    device_sentry.fail(late(3), "Set")
    assert govctl.run("set UsbDevicesEnabled on --json").err == ""


class Watch:
    """govctl watch with these arguments. A context that ends it."""

    def __init__(self, *arguments):
        self._process = subprocess.Popen([govctl.PROGRAM, "watch", *arguments],
                                         stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.announced = self._process.stderr.readline()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        self._process.stdout.close()
        self._process.stderr.close()

    def line(self):
        """The words of the next line, without the time."""
        return self._process.stdout.readline().split()[2:]


def test_watch_of_some_keys(daemon, radio):
    daemon.start()
    with Watch("Camera*", "radio") as watch:
        daemon.change("VpnEnabled", False)
        daemon.change("CameraEnabled", False)
        daemon.set_switch("radio", False)
        assert watch.line() == ["policy", "CameraEnabled", "off"]
        assert watch.line() == ["switch", "radio", "off"]
    assert govctl.run("watch nothing --once").code == 2


@pytest.mark.parametrize("key, pattern", [("a/b", "a*"), ("x[1]", "x[1]")])
def test_watch_of_switches_with_unusual_keys(daemon, switches, key, pattern):
    switches.set_switch(key, [4], True)
    daemon.start()
    with Watch(pattern) as watch:
        switches.announce(key, False)
        assert watch.line() == ["switch", key, "off"]


def test_watch_waits_for_a_daemon(daemon):
    assert govctl.run("watch --once").code == 5
    with Watch("--wait") as watch:
        assert watch.announced.startswith("govctl: watching")
        daemon.start()
        assert watch.line()[0] == "service"
        daemon.change("CameraEnabled", False)
        assert watch.line() == ["policy", "CameraEnabled", "off"]
