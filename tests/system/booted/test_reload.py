# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A reload enforces all policies again, without reading files."""

from jeepney import new_method_return

from testbed import unit
from testbed.bus import write_of
from testbed.files import CAMERA_MARKER
from testbed.waiting import wait_until


def reload():
    """Reloads the unit, as an administrator does."""
    unit.run("systemctl", "reload", unit.UNIT)


def told(manager):
    """Waits for the call to the service that ends applications, and answers it."""
    call = manager.next_call()
    manager.send(new_method_return(call))
    return call.body == ("org.kvt.messages",)


def test_marker_comes_back(daemon):
    CAMERA_MARKER.unlink()
    reload()
    wait_until(CAMERA_MARKER.exists, 5)
    assert unit.main_pid() == daemon


def test_services_are_called_again(daemon, root, runtime_manager):
    root.send(write_of("MessagesEnabled", False))
    assert told(runtime_manager)
    for _ in range(2):
        reload()
        assert told(runtime_manager)


def test_during_a_silent_service(daemon, root, runtime_manager):
    root.send(write_of("MessagesEnabled", False))
    runtime_manager.next_call()
    CAMERA_MARKER.unlink()
    reload()
    runtime_manager.close()
    wait_until(CAMERA_MARKER.exists, 10)
    assert unit.main_pid() == daemon
