# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The simulator's output about calls, and the effect of "fail" on a service."""

import datetime
import re
import time

import pytest
from jeepney import DBusAddress, DBusErrorResponse, HeaderFields, new_method_call

from testbed.simulator import Sim, do, start_device
from testbed.waiting import wait_until

NAME = "org.freedesktop.ohm.mdm"
AUDIO = DBusAddress("/org/freedesktop/ohm/mdm", NAME, NAME)
CLOSE = new_method_call(AUDIO, "Set", "ss", ("microphone", "disabled"))


@pytest.fixture
def json_device():
    """A device that prints JSON."""
    with start_device("--json") as device:
        yield device


def change(what, before, now):
    """A change in a document."""
    return {"what": what, "from": before, "to": now}


def test_line_of_text(device, daemon):
    daemon.start()
    daemon.change("MicrophoneEnabled", False)
    line = re.compile(r'^\d\d:\d\d:\d\d\.\d{3}  audio      Set\("microphone","disabled"\) {18}  '
                      r"microphone: on -> off$", re.MULTILINE)
    wait_until(lambda: line.search(device.out))
    assert "\033" not in device.out


def test_marker_file_is_printed(device, daemon):
    daemon.start()
    device.wait_for_out("camera: off -> on")
    daemon.change("CameraEnabled", False)
    device.wait_for_out("camera: on -> off")
    assert "  file       /var/lib/govd/camera_enabled  " in device.out


def test_calls_as_json(json_device, daemon):
    do("launch browserstandalone")
    daemon.start()
    daemon.change("BrowserEnabled", False)
    wait_until(lambda: len(json_device.results(origin="runtime", method="Terminate")) == 2)
    killed = json_device.results(origin="runtime")[0]
    told = datetime.datetime.fromisoformat(killed.pop("time"))
    assert abs(told - datetime.datetime.now(datetime.timezone.utc)) < datetime.timedelta(minutes=5)
    assert killed == {"origin": "runtime", "path": "/org/kvt/RuntimeManager/Control1",
                      "method": "Terminate", "arguments": ["org.kvt.browserstandalone"],
                      "error": None,
                      "changes": [change("running browserstandalone", "yes", "no")]}
    wait_until(lambda: json_device.results(method="AddToGlobalDenylist"))
    denied, = json_device.results(method="AddToGlobalDenylist")
    assert denied["changes"] == [change("denied browserpwa", "no", "yes"),
                                 change("denied browserstandalone", "no", "yes")]


def test_errors_are_printed(device, daemon):
    daemon.start()
    do("fail usb error")
    daemon.change("UsbDevicesEnabled", False)
    wait_until(lambda: re.search(r"usb +Set\(.*false\) +Failed\n", device.out))
    do("expect usb on")


def test_order_is_printed(json_device):
    do("plug", "usb", "--label", "A B")
    wait_until(lambda: json_device.results(origin="person", method="Plug"))
    # Reads of the state are not printed.
    do("status")
    do("launch clock")
    wait_until(lambda: json_device.results(origin="person", method="Launch"))
    assert [result["changes"] for result in json_device.results()] == [
        [change("storage A B", "absent", "mounted")], [change("running clock", "no", "yes")]]


def test_wrong_call_is_printed(json_device, root):
    with pytest.raises(DBusErrorResponse, match="InvalidArgs"):
        root.ask(new_method_call(AUDIO, "Set", "i", (42,)))
    wait_until(lambda: json_device.results(
        origin="audio", method="Set", arguments=[42],
        error="org.freedesktop.DBus.Error.InvalidArgs"))


def test_what_json_cannot_hold_is_null(json_device, client):
    call = new_method_call(AUDIO, "Set", "hdd", (0, float("nan"), 2.0))
    name, _ = client(descriptors=True).refusal(call)
    assert name == "org.freedesktop.DBus.Error.InvalidArgs"
    wait_until(lambda: json_device.results(arguments=[None, None, 2]))


@pytest.mark.parametrize("environment, is_coloured", [
    ("TERM=xterm", True), ("TERM=xterm NO_COLOR=1", False), ("TERM=dumb", False)])
def test_colour_only_on_a_terminal(environment, is_coloured):
    shell = f'export {environment}; exec script -qec "$SIM device" /dev/null'
    with Sim(shell=shell) as device:
        device.wait_for_out("the device is on the bus")
        do("launch clock")
        device.wait_for_out("running clock: no -> yes")
        assert ("\033[32mrunning clock: no -> yes\033[0m" in device.out) is is_coloured
        assert ("\033" in device.out) is is_coloured


def test_error_changes_nothing(device, root):
    do("fail audio error")
    do("expect fault audio error")
    with pytest.raises(DBusErrorResponse, match="org.freedesktop.DBus.Error.Failed"):
        root.ask(CLOSE)
    do("expect microphone on")
    do("heal audio")
    root.ask(CLOSE)
    do("expect microphone off")


def test_wrong_type_is_carried_out(device, root):
    do("fail audio wrong-type")
    reply = root.answer(root.call(CLOSE))
    assert reply.header.fields[HeaderFields.signature] == "i"
    do("expect microphone off")


def test_slow_answers_late(device, root):
    do("fail audio slow 0.4")
    start = time.monotonic()
    root.ask(CLOSE)
    # The verb makes the delay, so only an earlier answer is wrong.
    assert time.monotonic() - start >= 0.39
    do("expect microphone off")


def test_silent_never_answers(device, root):
    do("fail audio silent")
    root.call(CLOSE)
    device.wait_for_out("silent\n")
    do("expect microphone on")
    root.settle()  # a late message would have been taken for its reply
    with pytest.raises(TimeoutError):
        root.receive(timeout=0)


def test_last_fault_counts(device, root):
    do("fail audio silent")
    do("fail audio error")
    with pytest.raises(DBusErrorResponse):
        root.ask(CLOSE)
    do("heal audio")
    do("expect fault audio none")


def test_daemon_goes_on_without_the_service(device, daemon):
    daemon.start()
    do("stop runtime")
    do("launch browserstandalone")
    daemon.change("BrowserEnabled", False)
    do("expect denied browserstandalone yes --timeout 60")
    do("expect running browserstandalone yes")
