# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""File descriptors in messages neither end the daemon nor stay open in it."""

import os
import pathlib

import pytest
from jeepney import DBusAddress, HeaderFields, new_method_return, new_signal

from testbed import unit
from testbed.bus import SERVICE, Client, read_of, silent, write_of
from testbed.processes import open_descriptors
from testbed.waiting import wait_until

pytestmark = pytest.mark.bus

MOST = 16  # descriptors that dbus-daemon accepts in one message
POLICY_FILE = pathlib.Path("/etc/policy/policy.conf")

# Values that contain the message's descriptor 0, by their signature.
VALUES = {
    "h": 0,
    "ah": [0],
    "(h)": (0,),
    "(sh)": ("text", 0),
    "a{sh}": {"key": 0},
    "a{sv}": {"key": ("h", 0)},
    "av": [("s", "text"), ("ah", [0])],
    "v": ("v", ("v", ("h", 0))),
    "a(sa{s(ih)})": [("text", {"key": (1, 0)})],
}


@pytest.fixture
def descriptors():
    """As many descriptors as one message may bring."""
    files = [os.open("/dev/null", os.O_RDONLY) for _ in range(MOST)]
    yield files
    for file in files:
        os.close(file)


@pytest.fixture
def stand_in(stopped):
    """A client that owns the daemon's name, and receives what the bus passes on."""
    with Client("root", descriptors=True) as client:
        client.own(SERVICE)
        yield client


def signal_to(name):
    """An unrequested signal, sent to one client only."""
    message = new_signal(DBusAddress("/", interface="org.example.Stranger"), "Signal")
    message.header.fields[HeaderFields.destination] = name
    return message


def test_four_hundred_calls(waiting, runtime_manager, descriptors):
    with Client("guest", descriptors=True) as stranger:
        for _ in range(400):
            stranger.send_with(silent(read_of("CameraEnabled")), descriptors)
        stranger.settle()
    runtime_manager.close()
    assert unit.answers(20)
    assert (unit.main_pid(), unit.restarts()) == (waiting, 0)


@pytest.mark.parametrize("count", [1, MOST])
@pytest.mark.parametrize("message", [silent(read_of("CameraEnabled")), signal_to(SERVICE)],
                         ids=["call", "signal"])
def test_bus_stops(stand_in, descriptors, message, count):
    with Client("guest", descriptors=True) as stranger:
        stranger.send_with(message, descriptors[:count])
        stranger.send(silent(read_of("the next")))
        while (got := stand_in.receive(timeout=10)).body != ("the next",):
            assert got.header.fields[HeaderFields.sender] != stranger.unique_name


def test_replies_leave_nothing(daemon, root, runtime_manager, descriptors):
    root.ask(write_of("CameraEnabled", False))
    open_before = open_descriptors(daemon)
    root.send(write_of("MessagesEnabled", False))
    runtime_manager.send_with(new_method_return(runtime_manager.next_call()), descriptors)
    runtime_manager.settle()
    runtime_manager.close()
    assert unit.answers()
    assert open_descriptors(daemon) <= open_before


def test_values_are_refused(open_bus, daemon):
    text = POLICY_FILE.read_text()
    open_before = open_descriptors(daemon)
    with Client("mdm", descriptors=True) as agent:
        for signature, value in 20 * list(VALUES.items()):
            assert agent.ask(write_of("CameraEnabled", value, signature)) == (False,), signature
            assert agent.ask(read_of("CameraEnabled")) == (("b", True),)
    assert POLICY_FILE.read_text() == text
    wait_until(lambda: open_descriptors(daemon) <= open_before, 5)
