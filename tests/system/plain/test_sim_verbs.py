# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Each verb that shows or controls the simulated device."""

import re
import signal
import xml.etree.ElementTree as ElementTree

import pytest
from jeepney import DBusAddress, DBusErrorResponse, new_method_call

from testbed import files
from testbed.simulator import Sim, do, run, state
from testbed.waiting import wait_until

NAME = "org.kvt.DeviceSimulator"
DEVICE = DBusAddress("/org/kvt/DeviceSimulator", NAME, NAME)
AUDIO = DBusAddress("/org/freedesktop/ohm/mdm", *2 * ["org.freedesktop.ohm.mdm"])
DESCRIPTION = "/usr/share/dbus-1/interfaces/org.kvt.DeviceSimulator.xml"
CLEAR = "\033[H\033[2J"  # clears the terminal before each state
FRESH = {"camera": False, "microphone": True, "usb": True, "remoteAccess": True,
         "tethering": False, "certified": False, "denylist": [], "running": [], "storage": [],
         "events": [], "eventCount": 0,
         "usbModes": ["charging_only", "developer_mode", "mass_storage", "mtp_mode"]}


def order(root, member, signature, *arguments):
    """Calls the object that controls the device."""
    return root.ask(new_method_call(DEVICE, member, signature, arguments))


def test_fresh_device(device):
    fresh = state()
    assert {key: fresh[key] for key in FRESH} == FRESH
    assert [(one["present"], one["fault"]) for one in fresh["services"]] == 10 * [(True, "none")]


def test_reset_makes_it_fresh(device, root):
    fresh = state()
    for line in ("plug usb", "launch clock", "certified yes", "fail usb error", "stop audio",
                 "stop storage"):
        do(line)
    root.ask(new_method_call(
        DBusAddress("/org/kvtlabs/SystemLogs", "org.kvtlabs.SystemLogs", "org.kvtlabs.SystemLogs"),
        "sendEventStringAlt", "sss", ("kind", "INFO_LEVEL", "text")))
    assert state()["eventCount"] == 1
    with Sim("status", "--watch", "--json") as watch:
        wait_until(lambda: len(watch.results()) == 1)
        do("reset")
        wait_until(lambda: len(watch.results()) == 2)
        assert watch.results()[-1] == fresh
    assert state() == fresh
    do("plug card")
    do("expect storage CARD mounted")


def test_status_is_one_screen(device):
    do("plug", "usb", "--label", "MY PHOTOS")
    do("launch clock")
    lines = do("status").splitlines()
    assert lines == [
        "Device",
        "  camera          off  /var/lib/govd/camera_enabled",
        "  microphone      on",
        "  USB devices     on",
        "  USB modes       charging_only, developer_mode, mass_storage, mtp_mode",
        "  tethering       off",
        "  remote access   on",
        "  certified       no",
        "  denylist        -",
        "  running         clock",
        "  storage         MY PHOTOS (usb), mounted at /run/media/MY PHOTOS",
        "  services        all run",
        "  last events     -"]


def test_status_shows_faults(device):
    do("fail usb slow 2.5")
    do("stop audio")
    assert "  services        audio stopped, usb fails: slow 2.5\n" in do("status")


def test_services_are_listed(device):
    do("fail network silent")
    lines = do("services").splitlines()
    assert len(lines) == 10
    network, = [line for line in lines if "net.connman" in line]
    assert network.startswith("network ")
    assert network.endswith("fails: silent")
    assert run("services --json").json["result"] == {"services": state()["services"]}


def test_plugged_storage_is_mounted(device):
    labels = [do(f"plug {kind}") for kind in ("usb", "usb", "card")]
    assert labels == ["STICK\n", "STICK2\n", "CARD\n"]
    assert [medium["mounted"] for medium in state()["storage"]] == 3 * [True]
    assert do("unplug STICK") == "STICK\n"
    assert len(state()["storage"]) == 2
    assert do("plug usb") == "STICK\n"


def test_unplug_needs_no_label_for_the_only_one(device):
    assert run("unplug").err == "govd-sim: nothing is plugged in\n"
    do("plug usb --label A")
    assert do("unplug") == "A\n"
    do("plug usb --label A")
    do("plug card --label B")
    outcome = run("unplug")
    assert (outcome.code, outcome.err) == (2, "govd-sim: say which one to unplug: B, A\n")


def test_label_is_refused_twice(device):
    do("plug usb --label A")
    again = run("plug card --label A")
    assert (again.code, again.err) == (3, 'govd-sim: "A" is plugged in already; unplug it or '
                                          "choose another label\n")
    assert len(state()["storage"]) == 1


@pytest.mark.parametrize("label", ["a/b", "..", "\033[31m", "a\nb"])
def test_bad_labels(device, label):
    outcome = run("plug", "usb", "--label", label)
    assert (outcome.code, outcome.err.count("\n"), "\033" in outcome.err) == (2, 1, False)
    assert state()["storage"] == []


def test_applications_are_launched_once(device):
    do("launch messages")
    do("launch messages")
    assert state()["running"] == ["org.kvt.messages"]


def test_stopped_service_comes_back(device):
    for line in ("stop storage", "stop storage", "expect service storage absent", "plug card",
                 "start storage", "start storage", "expect service storage present",
                 "expect storage CARD mounted"):
        do(line)


def test_expect_waits(device):
    with (Sim("expect", "storage", "LATE ONE", "mounted", "--timeout", "60", "--json") as storage,
          Sim("expect", "running", "clock", "yes", "--timeout", "60") as running):
        do("plug", "usb", "--label", "LATE ONE")
        assert storage.finish().json["result"] == {"what": "storage LATE ONE", "value": "mounted"}
        do("launch clock")
        assert running.finish().code == 0


@pytest.mark.parametrize("words, message", [
    ("microphone off", "microphone is on, not off"),
    ("storage X mounted", "storage X is absent, not mounted"),
    ("storage %1 mounted", "storage %1 is absent, not mounted"),
])
def test_expect_shows_the_present_value(device, words, message):
    outcome = run(f"expect {words} --timeout 0.2")
    assert (outcome.code, outcome.err) == (1, f"govd-sim: {message}, after 0.2 s\n")


def members(description):
    """The members of the interface in a description, with types and directions."""
    interface = ElementTree.fromstring(description).find(f"interface[@name='{NAME}']")
    return sorted((member.tag, member.get("name"), member.get("type"),
                   [(argument.get("direction"), argument.get("type")) for argument in member])
                  for member in interface)


def test_bus_interface_is_as_described(device, root):
    introspection = DBusAddress(DEVICE.object_path, NAME, "org.freedesktop.DBus.Introspectable")
    live, = root.ask(new_method_call(introspection, "Introspect"))
    with open(DESCRIPTION, encoding="utf-8") as file:
        described = members(file.read())
    assert len(described) == 10
    assert described == members(live)


@pytest.mark.parametrize("member, signature, arguments", [
    ("Plug", "ss", ("x", "")), ("Unplug", "s", ("x",)), ("Launch", "s", ("x",)),
    ("Stop", "s", ("x",)), ("Start", "s", ("x",)), ("Fail", "ssd", ("x", "error", 0.0)),
    ("Fail", "ssd", ("audio", "x", 0.0)), ("Fail", "ssd", ("audio", "slow", -1.0)),
    ("Fail", "ssd", ("audio", "slow", float("nan"))), ("Heal", "s", ("x",))])
def test_unknown_is_an_error(device, root, member, signature, arguments):
    with pytest.raises(DBusErrorResponse, match="Error.Unknown"):
        order(root, member, signature, *arguments)


def test_changes_are_announced(device, root):
    with Sim("status", "--watch", "--json") as watch:
        wait_until(lambda: len(watch.results()) == 1)
        order(root, "SetCertified", "b", True)
        wait_until(lambda: len(watch.results()) == 2)
        # An order that changes nothing is not announced.
        order(root, "SetCertified", "b", True)
        root.ask(new_method_call(AUDIO, "Set", "ss", ("microphone", "enabled")))
        order(root, "SetCertified", "b", False)
        wait_until(lambda: not watch.results()[-1]["certified"])
        assert len(watch.results()) == 3


def test_watch_draws_each_change(device):
    with Sim("status", "--watch", "--json") as watch:
        wait_until(lambda: len(watch.results()) == 1)
        do("launch camera")
        wait_until(lambda: len(watch.results()) == 2)
        assert watch.results()[-1]["running"] == ["org.kvt.camera"]
        files.write(files.CAMERA_MARKER, "")
        wait_until(lambda: watch.results()[-1]["camera"])
        files.CAMERA_MARKER.unlink()
        wait_until(lambda: not watch.results()[-1]["camera"])
        files.reset()
        files.write(files.CAMERA_MARKER, "")
        wait_until(lambda: watch.results()[-1]["camera"])


@pytest.mark.parametrize("columns, rows, drawn, width", [
    (30, 10, 9, 30), (80, 2, 1, 6), (200, 100, 13, 71), (0, 0, 13, 71)])
def test_watch_fits_the_terminal(device, columns, rows, drawn, width):
    terminal = (f'export TERM=xterm NO_COLOR=; exec script -qec "stty cols {columns} rows {rows};'
                '$SIM status --watch" /dev/null')
    with Sim(shell=terminal) as watch:
        watch.wait_for_out(CLEAR)
        do("launch clock")
        # The first state is complete when the second one begins.
        wait_until(lambda: watch.out.count(CLEAR) == 2)
        first = watch.out.split(CLEAR)[1]
    assert first.endswith("\r\n")
    assert first.count("\r\n") == drawn
    assert "\033[1m" in first
    assert max(len(re.sub("\033\\[\\d+m", "", line)) for line in first.split("\r\n")) == width


def test_watch_ends_with_the_device(device):
    with Sim("status", "--watch") as watch:
        watch.wait_for_out("last events")
        device.process.send_signal(signal.SIGTERM)
        assert device.finish().code == 0
        outcome = watch.finish()
    assert outcome.code == 5
    assert 'no device is on the system bus; run "govd-sim device"' in outcome.err


def test_watch_ends_with_its_reader(device):
    with Sim(shell='$SIM status --watch | head -n 1; echo ${PIPESTATUS[0]}') as watch:
        watch.wait_for_out("Device")
        do("launch camera")
        do("launch clock")
        assert watch.finish().out == "Device\n0\n"
