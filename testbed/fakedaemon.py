# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A program that owns the daemon's name and answers as a test wants."""

import contextlib
import socket
import threading

from jeepney import HeaderFields, MessageType, new_error, new_method_return, new_signal

from testbed.bus import POLICY, SERVICE, Client

UNKNOWN = "org.freedesktop.DBus.Error.UnknownMethod"


class FakeDaemon:
    """Owns the daemon's name and answers calls in its own thread. A context that leaves the bus.

    `answers` maps "Interface.method" to the signature and the values of the reply, right or wrong;
    other calls end in an error. `calls` lists those that got a reply.
    """

    def __init__(self, **client):
        self.answers = {
            "Policy.KeyValue": ("v", ("b", True)),
            "Policy.SetKeyValue": ("b", True),
            "Switch.Keys": ("as", ["radio"]),
            "Switch.KeyValue": ("v", ("b", True)),
            "Switch.KeyPolicyTypes": ("ai", [4]),
            "Switch.SetKeyValue": ("b", True),
        }
        self.calls = []
        self._client = Client(**client)
        self._client.own(SERVICE)
        self._thread = threading.Thread(target=self._serve)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        with contextlib.suppress(OSError):  # the bus may have ended first
            self._client.sock.shutdown(socket.SHUT_RDWR)
        self._thread.join()
        self._client.close()

    def announce(self, key):
        """Announces that a policy is on."""
        self._client.send(new_signal(POLICY, "PolicyChanged", "sv", (key, ("b", True))))

    def _serve(self):
        with contextlib.suppress(ConnectionError):
            while True:
                message = self._client.receive()
                if message.header.message_type == MessageType.method_call:
                    self._answer(message)

    def _answer(self, message):
        fields = message.header.fields
        interface = fields.get(HeaderFields.interface, "").rpartition(".")[2]
        call = f"{interface}.{fields[HeaderFields.member]}"
        if call not in self.answers:
            self._client.send(new_error(message, UNKNOWN))
            return
        self.calls.append(call)
        signature, *values = self.answers[call]
        self._client.send(new_method_return(message, signature, tuple(values)))
