# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The bus object by which people and scripts read and control the device."""

import dbus

from testbed.services.service import PROPERTIES, NameTaken, Refusal, Service
from testbed.sim import names
from testbed.sim.output import as_json


class Control(Service):
    """Carries out orders, and announces each change of the device."""
    NAME = names.SERVICE

    def __init__(self, device):
        super().__init__()
        self._device = device
        device.changed = self._announce
        self.called = self._report

    def create(self):
        device = self._device
        control = self.add_object(names.PATH, names.INTERFACE, [
            ("Plug", "ss", "s", lambda kind, label: device.ports.plug(kind, label)),
            ("Unplug", "s", "s", lambda label: device.ports.unplug(label)),
            ("Launch", "s", "", device.launch),
            ("Stop", "s", "", lambda word: device.set_present(word, False)),
            ("Start", "s", "", lambda word: or_refusal(device.set_present, word, True)),
            ("Fail", "ssd", "", device.set_fault),
            ("Heal", "s", "", lambda word: device.set_fault(word, "none", 0)),
            ("SetCertified", "b", "", lambda value: device.services["info"].set(value)),
            ("Reset", "", "", lambda: or_refusal(device.reset)),
        ])
        control.AddProperty(names.INTERFACE, "State", as_json(device.state()))

    def _announce(self):
        if not self.present:
            return
        properties = self.object(names.PATH).props[names.INTERFACE]
        state = as_json(self._device.state())
        if state != properties["State"]:
            properties["State"] = state
            self.signal(names.PATH, PROPERTIES, "PropertiesChanged", "sa{sv}as", names.INTERFACE,
                        dbus.Dictionary({"State": state}, signature="sv"),
                        dbus.Array([], signature="s"))

    def _report(self, call):
        if call.interface == names.INTERFACE:
            self._device.report("person", call)


def or_refusal(order, *arguments):
    """Carries out an order that needs names on the bus. Raises Refusal when one is taken."""
    try:
        order(*arguments)
    except NameTaken as taken:
        raise Refusal(f"{taken} cannot be taken on the bus; end the program that has the name",
                      names.REFUSED) from taken
