# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon's start on the bus, its end, and what makes the start fail."""

import json
import pathlib
import signal

import pytest
from jeepney import DBusAddress, DBusErrorResponse

from testbed import files
from testbed.bus import POLICY, SERVICE, read_of, reload_bus
from testbed.daemon import Process
from testbed.plugins import LIBRARIES, LOCK_PLUGINS, installed
from testbed.policies import KEYS
from testbed.waiting import wait_until

BUS_CONFIGURATION = pathlib.Path("/usr/share/dbus-1/system.conf")
# Policies are enforced twice at a start, before the registration; here without services.
ENFORCED = 2 * ["warning|default|Failed to disable USB devices connection."]
NO_TEXT = 'critical|default|""'  # of the bus library, for a name or a path that is taken
USB_ON = 2 * [("org.brinos.DeviceSentry1.UsbManager", "Enabled", True)]


def requests(transcript):
    """The calls that request the daemon's name."""
    return [call for call in transcript.calls("RequestName") if call.arguments[0] == SERVICE]


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_daemon_owns_its_name_and_ends_in_order(daemon, root, number):
    daemon.start_observed()
    assert root.process_of(SERVICE) == daemon.pid
    daemon.signal(number)
    assert daemon.wait() == 0
    wait_until(lambda: not root.owner(SERVICE))
    assert daemon.log() == ENFORCED


def test_exit_code_does_not_depend_on_the_event_loop(daemon, lock_plugin):
    plugin = lock_plugin()
    daemon.start()
    plugin.end_event_loop(3)
    assert daemon.wait() == 0


def test_end_takes_nothing_back(daemon, root, transcript):
    """The name is released with the connection, and everything stays enforced."""
    daemon.start()
    before = files.snapshot(files.POLICY_FILE)
    own = transcript.owner(SERVICE)
    assert daemon.stop() == 0
    wait_until(lambda: not root.owner(SERVICE))
    transcript.settle()
    assert transcript.messages(lambda message: message.sender == own and message.kind != "reply"
                               and message.member != "RemoveMatch") == []
    assert files.snapshot(files.POLICY_FILE) == before
    assert files.CAMERA_MARKER.exists()


def test_all_is_stored_and_enforced_when_the_name_is_seen(daemon, root):
    daemon.launch()
    wait_until(lambda: root.owner(SERVICE))
    assert files.CAMERA_MARKER.exists()
    assert files.stored().keys() == set(KEYS)
    assert daemon.policy("CameraEnabled") is True


def test_object_is_there_before_the_name(daemon, root):
    """A client that asks all the time would find the name without the object if there were such a
    moment; the daemon's blocking system calls are delayed to make it longer."""
    daemon.wrapper = ["strace", "--follow-forks", "--output=/dev/null", "--trace=futex",
                      "--inject=futex:delay_exit=3000"]
    daemon.launch()
    answer = None
    while daemon.running and not answer:
        try:
            answer = root.ask(read_of("UsbDevicesEnabled"))
        except DBusErrorResponse as error:
            assert error.name == "org.freedesktop.DBus.Error.ServiceUnknown"
    assert answer == (("b", True),)
    assert daemon.stop() == 0


def test_no_call_is_served_during_the_start(daemon, switches, root, transcript):
    switches.set_switch("lens", [1], True)
    switches.hold("keyValue")
    daemon.launch()
    switches.wait_for_call("holding keyValue")
    transcript.settle_bus()
    assert requests(transcript) == []
    assert root.owner(SERVICE) == ""
    # A call to another name of the same process finds no object.
    own = transcript.calls("ListNames")[0].sender
    with pytest.raises(DBusErrorResponse) as error:
        root.ask(read_of("UsbDevicesEnabled",
                         DBusAddress(POLICY.object_path, own, POLICY.interface)))
    assert error.value.name == "org.freedesktop.DBus.Error.UnknownObject"
    switches.release()
    daemon.wait_until_ready()
    assert daemon.policy("UsbDevicesEnabled") is True


def test_second_instance_fails(daemon, root, transcript):
    """It saves and enforces everything before it finds the name taken; the first one runs on."""
    daemon.start()
    before = files.snapshot(files.POLICY_FILE)
    with Process() as second:
        second.launch()
        assert second.wait() == 1
        assert second.log() == [*ENFORCED, NO_TEXT]
        assert files.snapshot(files.POLICY_FILE) != before
        assert daemon.policy("CameraEnabled") is True
        assert root.process_of(SERVICE) == daemon.pid
        assert len(requests(transcript)) == 1
        assert transcript.calls("ReleaseName") == []
        # Nothing is left that makes the next start fail.
        assert daemon.stop() == 0
        second.launch()
        second.wait_until_ready()


def test_second_instance_reads_the_configuration(daemon):
    daemon.start()
    assert files.CAMERA_MARKER.exists()
    files.store({"CameraEnabled": False})
    with Process() as second:
        second.launch()
        assert second.wait() == 1
    assert not files.CAMERA_MARKER.exists()
    assert files.stored().keys() == set(KEYS)
    assert daemon.policy("CameraEnabled") is True


def test_name_that_is_not_permitted_ends_the_start(daemon, transcript):
    rules = BUS_CONFIGURATION.read_text()
    denial = f'<policy user="root"><deny own="{SERVICE}"/></policy>'
    BUS_CONFIGURATION.write_text(rules.replace("</busconfig>", f"{denial}</busconfig>"))
    reload_bus()
    try:
        daemon.launch()
        assert daemon.wait() == 1
    finally:
        BUS_CONFIGURATION.write_text(rules)
        reload_bus()
    transcript.settle_bus()
    request, = requests(transcript)
    reply, = transcript.messages(lambda message: message.is_reply_to(request))
    assert reply.error == "org.freedesktop.DBus.Error.AccessDenied"
    text, = reply.arguments
    assert text and daemon.log() == [*ENFORCED, f"critical|default|{json.dumps(text)}"]
    assert files.CAMERA_MARKER.exists()


def test_path_that_is_taken_ends_the_start(daemon, device_sentry, transcript):
    """By a library in the daemon's own process."""
    device_sentry.appear()
    with installed(LIBRARIES / "pathtaker.so", LOCK_PLUGINS / "pathtaker.so"):
        daemon.launch()
        assert daemon.wait() == 1
    transcript.settle_bus()
    assert daemon.log() == [NO_TEXT]
    assert [call.arguments for call in device_sentry.calls] == USB_ON
    assert requests(transcript) == []
    assert files.CAMERA_MARKER.exists()
