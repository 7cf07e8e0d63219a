# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Clients of the system bus that can send messages which no bus library would send."""

import contextlib
import os
import pathlib
import select
import signal
import socket
import struct
import subprocess
import time

from jeepney import (DBusAddress, DBusErrorResponse, HeaderFields, MessageFlag, MessageType,
                     new_method_call)
from jeepney.io.blocking import DBusConnection
from jeepney.low_level import Endianness, Struct, parse_signature

from testbed import users
from testbed.waiting import wait_until

SOCKET = "/run/dbus/system_bus_socket"
SERVICE = "org.kvt.PolicyManager"
POLICY = DBusAddress("/org/kvt/PolicyManager", SERVICE, "org.kvt.PolicyManager.Policy")
SWITCH = DBusAddress("/org/kvt/PolicyManager", SERVICE, "org.kvt.PolicyManager.Switch")
BUS = DBusAddress("/org/freedesktop/DBus", "org.freedesktop.DBus", "org.freedesktop.DBus")
PROCESS_FILE = pathlib.Path("/run/dbus/pid")  # there while the bus runs
START = pathlib.Path(__file__).parents[1] / "scripts/sandbox.d/bus"
POLICIES = pathlib.Path("/etc/dbus-1/system.d")  # what the bus reads after all packages' files

# What the bus answers in the place of a service that is absent, and of one that ends in a call; and
# whether it limits the calls of a client that have no answer.
ABSENT, DIED, LIMITS_CALLS = (
    ("The name is not activatable", "Remote peer disconnected", False)
    if os.environ.get("GOVD_BUS") == "dbus-broker" else
    ("The name {} was not provided by any .service files",
     "Message recipient disconnected from message bus without replying", True))

# The services around the daemon.
SERVICES = ("com.meego.usb_moded", "net.connman", "org.brinos.DeviceSentry1",
            "org.freedesktop.ohm.mdm", "org.kvt.RuntimeManager", "org.kvt.deviceinfo",
            "org.kvt.developermode", "org.kvtlabs.SystemLogs", "org.pelloraos.appjaild1")

ANSWER = 60.0  # seconds that a call may take when its test names no other deadline
PENDING = 120  # unanswered calls of one client; below the limit of dbus-daemon
CHUNK = 1 << 18  # bytes that a flood hands to the kernel at once


class Client(DBusConnection):
    """A connection to the system bus, or to the bus at another `path`, that `user` has made: a
    process, or that of a user's name.

    With `descriptors` it can send and receive file descriptors. Raises ConnectionError when no bus
    answers. A context that closes the connection.
    """

    def __init__(self, user="root", descriptors=False, path=SOCKET):
        self.user = users.user(user) if isinstance(user, str) else user
        connection = self.user.connect(path)
        log_in(connection, self.user.uid, descriptors)
        super().__init__(connection, descriptors)

    def ask(self, message, deadline=ANSWER):
        """Sends a call and returns the values of the reply.

        Raises DBusErrorResponse, and TimeoutError when no reply comes within `deadline` seconds.
        """
        reply = self.send_and_get_reply(message, timeout=deadline)
        if reply.header.message_type == MessageType.error:
            raise DBusErrorResponse(reply)
        return reply.body

    def refusal(self, message):
        """Sends a call that must fail, and returns the name of the error and its text."""
        reply = self.send_and_get_reply(message, timeout=ANSWER)
        assert reply.header.message_type == MessageType.error, reply.body
        return (reply.header.fields[HeaderFields.error_name], *reply.body)

    def own(self, name):
        """Takes a name on the bus; what is called there waits for next_call()."""
        assert self.ask(new_method_call(BUS, "RequestName", "su", (name, 4))) == (1,)

    def next_call(self, deadline=10.0):
        """The next method call to this client. Raises TimeoutError after `deadline` seconds."""
        end = time.monotonic() + deadline
        while True:
            message = self.receive(timeout=max(0, end - time.monotonic()))
            if message.header.message_type == MessageType.method_call:
                return message

    def call(self, message):
        """Sends a call without waiting for its reply. Returns its serial, for answer()."""
        serial = next(self.outgoing_serial)
        self.send(message, serial=serial)
        return serial

    def answer(self, serial, deadline=ANSWER):
        """Returns the reply or error to a message of call(); other messages before it are dropped.
        Raises TimeoutError after `deadline` seconds."""
        end = time.monotonic() + deadline
        while True:
            message = self.receive(timeout=max(0, end - time.monotonic()))
            if message.header.fields.get(HeaderFields.reply_serial) == serial:
                return message

    def vanish(self):
        """Closes the connection after all that was sent, and returns when the bus has noticed."""
        self.settle()
        self.close()
        with Client() as other:
            wait_until(lambda: not other.owner(self.unique_name))

    def owner(self, name):
        """The unique name of the owner of a name; empty when there is none."""
        return self._ask_bus("GetNameOwner", name, "")

    def process_of(self, name):
        """The process id of the owner of a name; 0 when there is none."""
        return self._ask_bus("GetConnectionUnixProcessID", name, 0)

    def _ask_bus(self, question, name, otherwise):
        try:
            return self.ask(new_method_call(BUS, question, "s", (name,)))[0]
        except DBusErrorResponse:
            return otherwise

    def settle(self):
        """Returns when the bus has dealt with all that this client has sent."""
        self.ask(new_method_call(BUS, "GetId"))

    def flood(self, message, count):
        """Sends a message `count` times, each with a new serial, without waiting for replies."""
        serialised = bytearray(message.serialise(serial=1))
        per_chunk = max(1, CHUNK // len(serialised))
        for start in range(0, count, per_chunk):
            chunk = bytearray()
            for _ in range(min(per_chunk, count - start)):
                struct.pack_into("<I", serialised, 8, next(self.outgoing_serial))
                chunk += serialised
            self.sock.sendall(chunk)

    def send_with(self, message, descriptors):
        """Sends a message with file descriptors, whether its body holds them or not."""
        message.header.fields[HeaderFields.unix_fds] = len(descriptors)
        serialised = message.serialise(serial=next(self.outgoing_serial))
        socket.send_fds(self.sock, [serialised], descriptors)


@contextlib.contextmanager
def bus_policy(name, rules):
    """Adds these rules to the bus policy, after those of packages, as long as the context lasts."""
    file = POLICIES / f"{name}.conf"
    file.write_text(f"<busconfig>{rules}</busconfig>")
    reload_bus()
    try:
        yield
    finally:
        file.unlink()
        reload_bus()


def service_rules():
    """Rules that let root own the names of the services and every user call them."""
    return "".join(f'<policy user="root"><allow own="{name}"/></policy>'
                   f'<policy context="default"><allow send_destination="{name}"/></policy>'
                   for name in SERVICES)


def reload_bus():
    """Has the bus read its configuration again."""
    with Client() as client:
        client.ask(new_method_call(BUS, "ReloadConfig"))


def with_field(serialised, code, signature, value):
    """A serialised message with one more header field, which no library may know."""
    length, = struct.unpack_from("<I", serialised, 12)
    fields, rest = serialised[16:16 + length], serialised[16 + length + -length % 8:]
    field = Struct([parse_signature(["y"]), parse_signature(["v"])])
    fields += field.serialise((code, (signature, value)), length, Endianness.little)
    return (serialised[:12] + struct.pack("<I", len(fields)) + fields
            + b"\0" * (-len(fields) % 8) + rest)


def stop_bus():
    """Ends the bus, which closes every connection, and returns when its process has ended."""
    process = int(PROCESS_FILE.read_text())
    handle = os.pidfd_open(process)
    os.kill(process, signal.SIGTERM)
    ended, _, _ = select.select([handle], [], [], ANSWER)
    os.close(handle)
    assert ended, "the bus does not end"
    PROCESS_FILE.unlink(missing_ok=True)


def start_bus():
    """Starts the bus unless it runs, and returns when it listens."""
    if not PROCESS_FILE.exists():
        subprocess.run([START], check=True)


def silent(message):
    """The message with the flag NO_REPLY_EXPECTED."""
    message.header.flags |= MessageFlag.no_reply_expected
    return message


def read_of(key, address=POLICY):
    """A call that reads a policy or, with SWITCH, a switch."""
    return new_method_call(address, "KeyValue", "s", (key,))


def write_of(key, value, signature="b", address=POLICY):
    """A call that sets a policy or, with SWITCH, a switch to a value of this type."""
    return new_method_call(address, "SetKeyValue", "sv", (key, (signature, value)))


def introspection():
    """A call that the daemon's main thread answers in order after all before it, by code of the bus
    own."""
    address = DBusAddress(POLICY.object_path, SERVICE, "org.freedesktop.DBus.Introspectable")
    return new_method_call(address, "Introspect")


def flood(name, message, count):
    """Sends a call of this user `count` times, through new connections of PENDING calls each."""
    for _ in range(0, count, PENDING):
        with Client(name) as client:
            client.flood(message, PENDING)
            client.settle()


def log_in(connection, user, descriptors):
    """Does the authentication on a new connection. Raises ConnectionError when it is refused."""
    lines = [(f"\0AUTH EXTERNAL {str(user).encode().hex()}", b"OK ")]
    if descriptors:
        lines.append(("NEGOTIATE_UNIX_FD", b"AGREE_UNIX_FD"))
    for line, answer in lines:
        connection.sendall(f"{line}\r\n".encode())
        if not connection.recv(1024).startswith(answer):
            raise ConnectionError(f"the bus refuses {line}")
    connection.sendall(b"BEGIN\r\n")
