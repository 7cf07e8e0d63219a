# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A client of the device that runs on the bus."""

import collections
import json
import signal
import time

from jeepney import DBusAddress, HeaderFields, MatchRule, MessageType, new_method_call
from jeepney.io.blocking import open_dbus_connection

from testbed.sim import names
from testbed.sim.output import NO_ANSWER, NO_DEVICE, REFUSED, USAGE, Failure
from testbed.sim.text import printable

BUS = DBusAddress("/org/freedesktop/DBus", "org.freedesktop.DBus", "org.freedesktop.DBus")
DEVICE = DBusAddress(names.PATH, names.SERVICE, names.INTERFACE)
PROPERTIES = DBusAddress(names.PATH, names.SERVICE, "org.freedesktop.DBus.Properties")
RULES = (f"type='signal',sender='{names.SERVICE}',path='{names.PATH}',member='PropertiesChanged'",
         f"type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
         f"arg0='{names.SERVICE}'")
PATIENCE = 1.0  # seconds for the bus to tell the owner of a name
NO_DEVICE_THERE = Failure(
    NO_DEVICE, "no-device",
    'no device is on the system bus; run "govd-sim device" in another terminal')
BUS_LOST = Failure(NO_DEVICE, "no-bus",
                   "the connection to the system bus was lost; check that dbus runs")
BAD_ANSWER = Failure(
    NO_DEVICE, "bad-answer", f"what has the name {names.SERVICE} is no device of this version; "
    'end it and run "govd-sim device"')


def silence(who, timeout):
    """The failure that the bus or the device does not answer."""
    return Failure(NO_ANSWER, "no-answer", f"no answer within {timeout:g} s; check that {who} is "
                   "not stopped, or wait longer with --timeout")


def connect(timeout):
    """A connection to the system bus. Raises Failure."""
    def give_up(*_):
        raise silence("the system bus", timeout)

    signal.signal(signal.SIGALRM, give_up)
    signal.setitimer(signal.ITIMER_REAL, timeout)
    try:
        return open_dbus_connection("SYSTEM", auth_timeout=None)
    except (OSError, RuntimeError, ValueError) as fault:
        raise Failure(NO_DEVICE, "no-bus",
                      "cannot reach the system bus; check that dbus runs") from fault
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)


class RemoteDevice:
    """Connects to the bus. The connection and all answers together may take `timeout` seconds. All
    methods raise Failure."""

    def __init__(self, timeout):
        self.end = time.monotonic() + timeout
        self._timeout = timeout
        self._heard = collections.deque()
        self._connection = connect(timeout)
        self._connection.filter(MatchRule(type="signal"), queue=self._heard)

    def state(self):
        """The state of the device."""
        body = self._ask(new_method_call(PROPERTIES, "Get", "ss", (names.INTERFACE, "State")))
        try:
            state = json.loads(body[0][1])
        except (ValueError, IndexError, TypeError):
            raise BAD_ANSWER from None
        if not isinstance(state, dict) or "services" not in state:
            raise BAD_ANSWER
        return state

    def order(self, method, signature, arguments):
        """Calls a method of the control object. Returns the values of the reply."""
        return self._ask(new_method_call(DEVICE, method, signature, arguments))

    def is_there(self):
        """Whether a device is on the bus."""
        return self._ask(new_method_call(BUS, "NameHasOwner", "s", (names.SERVICE,)))[0]

    def fileno(self):
        """The descriptor of the connection."""
        return self._connection.sock.fileno()

    def follow(self):
        """Subscribes to changes. To be called before state(), so that none is missed."""
        for rule in RULES:
            self._ask(new_method_call(BUS, "AddMatch", "s", (rule,)))

    def changes(self, end=None):
        """Yields each new state as it is announced, until `end` of the monotonic clock."""
        while True:
            left = None if end is None else max(0, end - time.monotonic())
            try:
                message = self._connection.recv_until_filtered(self._heard, timeout=left)
            except TimeoutError:
                return
            except OSError:
                raise BUS_LOST from None
            member = message.header.fields.get(HeaderFields.member)
            if member == "NameOwnerChanged" and message.body[0] == names.SERVICE:
                if not message.body[2]:
                    raise NO_DEVICE_THERE
            elif member == "PropertiesChanged" and "State" in message.body[1]:
                yield json.loads(message.body[1]["State"][1])

    def _ask(self, message):
        try:
            reply = self._connection.send_and_get_reply(
                message, timeout=max(0.001, self.end - time.monotonic()))
        except TimeoutError:
            raise self._silence() from None
        except OSError:
            raise BUS_LOST from None
        if reply.header.message_type == MessageType.error:
            raise self._failure_of(reply)
        return reply.body

    def _failure_of(self, reply):
        name = reply.header.fields[HeaderFields.error_name]
        text = printable(reply.body[0]) if reply.body and isinstance(reply.body[0], str) else ""
        if name == names.UNKNOWN:
            return Failure(USAGE, "unknown", text)
        if name == names.REFUSED:
            return Failure(REFUSED, "refused", text)
        if name == "org.freedesktop.DBus.Error.NoReply":  # sent also when the device has left
            return self._silence()
        if name == "org.freedesktop.DBus.Error.ServiceUnknown":
            return NO_DEVICE_THERE
        return BAD_ANSWER

    def _silence(self):
        question = new_method_call(BUS, "NameHasOwner", "s", (names.SERVICE,))
        try:
            is_owned = self._connection.send_and_get_reply(question, timeout=PATIENCE).body[0]
        except TimeoutError:
            return silence("the system bus", self._timeout)
        except OSError:
            return BUS_LOST
        return silence("the device", self._timeout) if is_owned else NO_DEVICE_THERE
