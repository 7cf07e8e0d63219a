# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A proxy of the system bus that delays or changes messages of one client."""

import os
import select
import socket
import threading

from testbed.bus import SOCKET
from testbed.waiting import PATIENCE

PATH = "/run/govd-test-relay"
CALL, PROTOCOL = 1, 1  # bytes 1 and 3 of a method call: message type, protocol version


class Relay:
    """Serves one client until the context ends. Everything else passes unchanged, in both
    directions. To the bus, this process is the client.

    From the message that contains `hold_at` on, what the client sends is held back. Each text that
    is a key of `spoil` is replaced by its value of the same length.
    """
    ADDRESS = f"unix:path={PATH}"

    def __init__(self, hold_at=None, spoil=()):
        self._hold_at = hold_at
        self._spoil = dict(spoil)
        self._held = bytearray()
        self._is_holding = threading.Event()
        self._wake, self._woken = socket.socketpair()
        self._listener = socket.socket(socket.AF_UNIX)
        self._listener.bind(PATH)
        self._listener.listen(1)
        self._thread = threading.Thread(target=self._run)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._wake.close()
        self._thread.join()
        os.unlink(PATH)

    def wait_until_held(self):
        """Waits until a message is held back."""
        assert self._is_holding.wait(PATIENCE)

    def release(self):
        """Passes on everything from now on."""
        self._wake.send(b"r")

    def _run(self):
        sources = [self._woken, self._listener]
        if self._woken in select.select(sources, [], [])[0]:
            return
        with self._listener.accept()[0] as client, socket.socket(socket.AF_UNIX) as bus:
            bus.connect(SOCKET)
            while self._pass_on(client, bus):
                pass

    def _pass_on(self, client, bus):
        """Waits for data and passes it on; False when client or bus has closed its connection."""
        ready = select.select([self._woken, client, bus], [], [])[0]
        for source in ready:
            data = source.recv(1 << 16)
            if not data:
                return False
            if source is bus:
                client.sendall(data)
            elif source is client:
                self._held += data
            else:
                self._hold_at = None
        for text, other in self._spoil.items():
            self._held = self._held.replace(text, other)
        size = self._held_from()
        bus.sendall(self._held[:size])
        del self._held[:size]
        if self._held:
            self._is_holding.set()
        return True

    def _held_from(self):
        """How many bytes may pass: all, or those before the message that is to be held back."""
        found = self._held.find(self._hold_at) if self._hold_at else -1
        if found < 0:
            return len(self._held)
        for start in range(found, 0, -1):
            order, kind, _, protocol = self._held[start:start + 4]
            if (order, kind, protocol) == (ord("l"), CALL, PROTOCOL):
                return start
        return 0
