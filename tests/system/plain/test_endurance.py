# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Endless calls: the daemon's memory and descriptors do not grow after the first ten thousand. A
flood delays other callers and has no other effect."""

import os
import signal

from jeepney import DBusAddress, new_method_call

from testbed import files
from testbed.bus import POLICY, SERVICE, SWITCH, introspection, read_of, silent, write_of
from testbed.processes import open_descriptors, resident
from testbed.users import MAY_WRITE

EVERYTHING = 1_000_000 if "GOVD_HOLD" in os.environ else 100_000
FIRST = 10_000
UNANSWERED = 100  # calls of one client at a time, so that the bus does not refuse more


def odd_calls():
    """Cheap calls that fail, or that do not concern policies."""
    def of(interface, member):
        return new_method_call(DBusAddress(POLICY.object_path, SERVICE, interface), member)
    return [introspection(), of("org.freedesktop.DBus.Peer", "Ping"),
            of(POLICY.interface, "SetKeyValue"), of(POLICY.interface, "setPolicyValue"),
            of(SWITCH.interface, "Keys"), of("org.example.Nobody", "KeyValue")]


def test_memory_and_descriptors_stay_as_they_are(process, client):
    # Policies whose services may be absent: by design, a change is kept for a service that has not
    # appeared yet, which takes memory.
    keys = ("NfcEnabled", "WlanEnabled", "VpnEnabled", "CloudSyncEnabled", "BackupEnabled",
            "DeveloperShellEnabled")
    process.start()
    clients = [client(user) for user in MAY_WRITE]
    messages = [*odd_calls(), *(read_of(key) for key in keys[:2]),
                *(write_of(key, value) for key in keys for value in (False, True))]

    def call(count):
        for number in range(count // UNANSWERED):
            one = clients[number % len(clients)]
            # Most calls are odd ones.
            message = messages[number % len(messages) if number % 4 == 0 else number % 6]
            one.flood(message, UNANSWERED)
            one.ask(introspection())
    call(FIRST)
    memory, descriptors = resident(process.pid), open_descriptors(process.pid)
    call(EVERYTHING - FIRST)
    assert resident(process.pid) - memory <= 1 << 20
    assert open_descriptors(process.pid) == descriptors
    assert process.stop() == 0


def test_flood_costs_others_time_and_nothing_else(process, client):
    process.start()
    before = files.snapshot(files.POLICY_FILE)
    process.signal(signal.SIGSTOP)  # so that all calls are queued before the read
    flood = client("guest")
    flood.flood(silent(write_of("NfcEnabled", False)), 20_000)
    flood.settle()
    process.signal(signal.SIGCONT)
    assert client("mdm").ask(read_of("NfcEnabled"), 600) == (("b", True),)
    assert files.snapshot(files.POLICY_FILE) == before
