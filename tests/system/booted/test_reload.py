# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A reload enforces all policies again, without reading files."""

import pathlib

import pytest
from jeepney import new_method_return

from testbed import unit
from testbed.bus import Client, read_of, write_of
from testbed.waiting import wait_until

CAMERA_MARKER = pathlib.Path("/var/lib/govd/camera_enabled")
POLICY_FILE = pathlib.Path("/etc/policy/policy.conf")


def reload():
    """Reloads the unit, as an administrator does."""
    unit.run("systemctl", "reload", unit.UNIT)


@pytest.fixture
def without_marker(daemon):
    """The process id of a daemon whose camera marker has been removed."""
    CAMERA_MARKER.unlink()
    return daemon


def told(manager):
    """Waits for the call to the service that ends applications, and answers it."""
    call = manager.next_call()
    manager.send(new_method_return(call))
    return call.body == ("org.kvt.messages",)


def test_marker_comes_back(without_marker):
    reload()
    wait_until(CAMERA_MARKER.exists, 5)
    assert unit.main_pid() == without_marker
    CAMERA_MARKER.unlink()
    reload()
    wait_until(CAMERA_MARKER.exists, 5)


def test_files_are_not_read(without_marker, root):
    text = POLICY_FILE.read_text()
    POLICY_FILE.write_text(text.replace("CameraEnabled=true", "CameraEnabled=false"))
    reload()
    wait_until(CAMERA_MARKER.exists, 5)
    assert root.ask(read_of("CameraEnabled")) == (("b", True),)


def test_services_are_called_again(daemon, root):
    with Client("root") as manager:
        manager.own("org.kvt.RuntimeManager")
        root.send(write_of("MessagesEnabled", False))
        assert told(manager)
        for _ in range(2):
            reload()
            assert told(manager)


def test_during_a_silent_service(daemon, root):
    with Client("root") as manager:
        manager.own("org.kvt.RuntimeManager")
        root.send(write_of("MessagesEnabled", False))
        manager.next_call()
        CAMERA_MARKER.unlink()
        reload()
    wait_until(CAMERA_MARKER.exists, 10)
    assert unit.main_pid() == daemon
