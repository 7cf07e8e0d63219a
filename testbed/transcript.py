# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Every message that passes the bus, in the order of the bus."""

import contextlib
import itertools
import socket
import threading
from dataclasses import dataclass, field

from jeepney import (DBusAddress, DBusErrorResponse, HeaderFields, MessageFlag, MessageType,
                     new_method_call, new_signal)
from jeepney.low_level import Variant, parse_signature

from testbed.bus import SERVICE, Client, introspection
from testbed.waiting import PATIENCE

MONITORING = DBusAddress("/org/freedesktop/DBus", "org.freedesktop.DBus",
                         "org.freedesktop.DBus.Monitoring")
MARKER = DBusAddress("/", interface="org.govd.test.Marker")
KINDS = {MessageType.method_call: "call", MessageType.method_return: "reply",
         MessageType.error: "error", MessageType.signal: "signal"}


@dataclass(frozen=True)
class Message:
    """A message of the bus. Its arguments have the content of a variant in the variant's place."""
    kind: str  # "call", "reply", "error" or "signal"
    serial: int
    sender: str
    destination: str
    path: str
    interface: str
    member: str
    error: str  # the name of an error
    answers: int  # the serial of the call that a reply or an error is for
    signature: str
    arguments: tuple = field(default=())
    may_start: bool = False  # whether a call may start its service

    def is_reply_to(self, call):
        """Whether this is the reply, or the error, that answers a call."""
        return (self.kind in ("reply", "error") and self.answers == call.serial
                and self.destination == call.sender)


class Transcript:
    """A monitor of the bus, which reads all messages in a thread of its own."""

    def __init__(self):
        self._messages = []
        self._start = 0
        self._arrived = threading.Condition()
        self._numbers = itertools.count()
        self._client = Client()
        self._monitor = Client(descriptors=True)  # dbus-broker ends a monitor that cannot take them
        self._monitor.ask(new_method_call(MONITORING, "BecomeMonitor", "asu", ([], 0)))
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def close(self):
        """Ends the monitor."""
        self._monitor.sock.shutdown(socket.SHUT_RDWR)
        self._reader.join()
        self._monitor.close()
        self._client.close()

    def messages(self, condition=lambda message: True):
        """The messages since the start or the last clear() that meet a condition."""
        with self._arrived:
            return [message for message in self._messages[self._start:] if condition(message)]

    def calls(self, member, sender=None):
        """The calls of a method, of all senders or of the one with this unique name."""
        return self.messages(lambda message: message.kind == "call" and message.member == member
                             and sender in (None, message.sender))

    def signals(self, member):
        """The signals of this name, of all senders."""
        return self.messages(lambda message: message.kind == "signal" and message.member == member)

    def wait_for(self, condition, deadline=PATIENCE):
        """Waits for a message that meets a condition and returns the first; messages so far count.
        Raises TimeoutError after `deadline` seconds."""
        found, checked = [], self._start

        def arrived():
            nonlocal checked
            found.extend(filter(condition, self._messages[checked:]))
            checked = len(self._messages)
            return found
        with self._arrived:
            if not self._arrived.wait_for(arrived, deadline):
                raise TimeoutError(f"no such message has passed within {deadline} s")
        return found[0]

    def settle(self):
        """Waits until the daemon has handled the messages that were sent to it, and until its own
        messages have been read. What is not in the transcript then was not sent."""
        if self._client.owner(SERVICE):
            with contextlib.suppress(DBusErrorResponse):  # it was just leaving
                self._client.ask(introspection())
        self.settle_bus()

    def settle_bus(self):
        """Waits until all messages are read that the bus has passed on so far."""
        number = f"{next(self._numbers)}"
        self._client.send(new_signal(MARKER, "Settled", "s", (number,)))
        self.wait_for(lambda message: message.interface == MARKER.interface
                      and message.arguments == (number,))

    def clear(self):
        """Forgets all messages that the bus has passed on so far."""
        self.settle_bus()
        with self._arrived:
            self._start = len(self._messages)

    def owner(self, name):
        """The unique name of the present or last owner of a name, as seen since the start."""
        changes = [message for message in self._messages if message.kind == "signal"
                   and message.member == "NameOwnerChanged" and message.arguments[0] == name]
        owners = [change.arguments[2] for change in changes if change.arguments[2]]
        return owners[-1] if owners else ""

    def _read(self):
        while True:
            try:
                message = message_of(self._monitor.receive())
            except ConnectionError:
                return
            with self._arrived:
                self._messages.append(message)
                self._arrived.notify_all()


def message_of(message):
    """Converts a message of the bus library."""
    header, fields = message.header, message.header.fields
    signature = fields.get(HeaderFields.signature, "")
    types = parse_signature(list(f"({signature})")).fields if signature else ()
    arguments = tuple(value[1] if isinstance(type_, Variant) else value
                      for type_, value in zip(types, message.body))
    return Message(
        KINDS[header.message_type], header.serial, fields.get(HeaderFields.sender, ""),
        fields.get(HeaderFields.destination, ""), fields.get(HeaderFields.path, ""),
        fields.get(HeaderFields.interface, ""), fields.get(HeaderFields.member, ""),
        fields.get(HeaderFields.error_name, ""), fields.get(HeaderFields.reply_serial, 0),
        signature, arguments, not header.flags & MessageFlag.no_auto_start)
