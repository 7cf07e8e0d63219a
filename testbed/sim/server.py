# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Runs a device in this process."""

import signal
import threading

from gi.repository import GLib

from testbed.services.service import LOOP, NameTaken
from testbed.sim.control import Control
from testbed.sim.device import Device
from testbed.sim.output import NO_DEVICE, REFUSED, Failure
from testbed.sim.remote import RemoteDevice
from testbed.sim.view import call_line, call_object


def serve(request, output):
    """Runs a device until a signal ends it, its output is closed or the bus is lost. Raises
    Failure."""
    connection = RemoteDevice(request.timeout)
    if connection.is_there():
        raise Failure(REFUSED, "refused",
                      "a device is on this bus already; end it first, or use that one")
    loop, losses = LOOP.loop, []
    LOOP.thread = threading.current_thread()
    device = Device()

    def show(happening):
        output.write(call_object(happening), call_line(happening, output))
        if not output.is_open:
            loop.quit()

    def lose_bus(*_):
        losses.append(Failure(NO_DEVICE, "no-bus", "the connection to the system bus was lost; "
                              "check that dbus runs, and start the device again"))
        loop.quit()

    appear(device, Control(device))
    device.happened = show
    priority = GLib.PRIORITY_DEFAULT
    GLib.unix_fd_add_full(priority, connection.fileno(), GLib.IOCondition.HUP, lose_bus)
    for number in (signal.SIGINT, signal.SIGTERM):
        GLib.unix_signal_add(priority, number, loop.quit)
    output.note("the device is on the bus")
    loop.run()
    if losses:
        raise losses[0]


def appear(device, control):
    """Takes all names on the bus. Raises Failure."""
    try:
        device.appear()
        control.appear()
    except NameTaken as taken:
        raise Failure(REFUSED, "refused", f"the name {taken} cannot be taken on the system bus: "
                      "a real service has it, or this user may not have it; use a bus without "
                      "the first, as root") from taken
