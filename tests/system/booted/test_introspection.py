# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon does not read services' introspection data."""

import configparser
import contextlib
import socket
import threading

import pytest
from jeepney import HeaderFields, new_method_return

from testbed import unit
from testbed.bus import SERVICES, Client, write_of


class Services(threading.Thread):
    """All services around the daemon, in one client. They answer each call at once.

    `members` lists the called members in order. A context.
    """

    def __init__(self):
        super().__init__()
        self.members = []
        self._client = Client("root")
        for name in SERVICES:
            self._client.own(name)

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self._client.sock.shutdown(socket.SHUT_RDWR)
        self.join()
        self._client.close()

    def run(self):
        with contextlib.suppress(ConnectionError):
            while True:
                call = self._client.next_call(3600)
                self.members.append(call.header.fields[HeaderFields.member])
                self._client.send(new_method_return(call))


@pytest.fixture
def services(stopped):
    """The services that the daemon calls."""
    with Services() as present:
        yield present


def test_no_service_is_introspected(services, root):
    unit.start()
    policies = configparser.ConfigParser()
    policies.optionxform = str
    policies.read("/etc/policy/policy.conf")
    for key in policies["policy"]:
        for value in (False, True):
            assert root.ask(write_of(key, value)) == (True,)
    assert "Terminate" in services.members
    assert "Introspect" not in services.members
