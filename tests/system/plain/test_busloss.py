# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon that loses the bus, or finds none: it does the rest of its work, and ends."""

import pytest

from testbed import files
from testbed.bus import introspection, start_bus, stop_bus, write_of
from testbed.daemon import Process
from testbed.policies import KEYS
from testbed.services.service import SILENCE
from testbed.waiting import wait_until

USB_FAILURE = "warning|default|Failed to disable USB devices connection."
NO_BUS = 'critical|default|"Not connected to D-Bus server"'


@pytest.fixture(autouse=True)
def bus():
    """Makes sure that the bus runs before and after each test."""
    yield
    start_bus()


def test_without_bus_everything_else_is_done(process):
    files.store({"DeveloperShellEnabled": False})
    stop_bus()
    process.launch()
    assert process.wait() == 1
    assert process.log() == [
        "warning|default|Failed to get registered services:  QDBusError("
        '"org.freedesktop.DBus.Error.Disconnected", "Not connected to D-Bus server")',
        USB_FAILURE, USB_FAILURE, NO_BUS]
    assert files.CAMERA_MARKER.exists()
    assert files.DEVELOPER_SHELL_MARKER.exists()
    assert files.stored().keys() == set(KEYS)
    assert files.stored()["UserReportExportEnabled"] == "false"


def test_bus_that_is_lost_during_the_start_is_no_bus(process, switches):
    switches.set_switch("lens", [1], True)
    switches.hold("keyValue")
    process.launch()
    switches.wait_for_call("holding keyValue")
    stop_bus()
    switches.release()
    assert process.wait() == 1
    assert process.log() == [USB_FAILURE, USB_FAILURE, NO_BUS]
    assert files.CAMERA_MARKER.exists()


def test_bus_that_is_lost_in_a_call_of_the_start_is_no_bus(process, device_sentry):
    device_sentry.fail(SILENCE)
    device_sentry.appear()
    process.launch()
    wait_until(lambda: device_sentry.calls)
    stop_bus()
    assert process.wait() == 1
    assert process.log()[-1] == NO_BUS


def test_bus_that_is_lost_in_a_call_of_a_change_ends_the_daemon(process, device_sentry, root):
    process.launch()
    process.wait_until_ready()
    device_sentry.fail(SILENCE)
    device_sentry.appear()
    root.call(write_of("UsbDevicesEnabled", False))
    wait_until(lambda: device_sentry.calls)
    stop_bus()
    assert process.wait() == 0
    assert files.stored()["UsbDevicesEnabled"] == "false"


def test_loss_of_the_bus_is_no_failure(process, root):
    process.launch()
    process.wait_until_ready()
    # The bus library can abort when the bus ends during a call, so the call is answered first.
    assert root.ask(introspection())
    stop_bus()
    assert process.wait() == 0
    assert process.log() == [USB_FAILURE, USB_FAILURE,
                             "warning|default|Lost the connection to the system bus"]
    start_bus()
    with Process() as next_one:
        next_one.launch()
        next_one.wait_until_ready()
